// SPDX-License-Identifier: MIT
#include "app/options.h"

#include <cstdio>

namespace sordin {

namespace {

constexpr auto usage = "usage: sordin [--hidden]\n"
                       "       sordin --restore-volume | --toggle | --version | --help\n"
                       "       sordin --status [--json] [--follow]\n"
                       "  --hidden          start with only the icon, without the window\n"
                       "  --restore-volume  restore the volume if the running Sordin has faded it\n"
                       "  --toggle          pause or resume the running Sordin\n"
                       "  --status          print the state of the running Sordin on one line\n"
                       "  --json            with --status: print a JSON object\n"
                       "  --follow          with --status: print a line after each change\n"
                       "  --version         print the version\n"
                       "  --help            print this help\n";
constexpr auto version = "sordin " SORDIN_VERSION "\n";

}  // namespace

std::optional<Options> parseOptions(const std::vector<std::string_view>& arguments) {
    Options options;
    StatusRequest status;
    for (const std::string_view argument : arguments) {
        if (argument == "--hidden") {
            options.hidden = true;
        } else if (argument == "--restore-volume") {
            options.request = "RestoreNow";
        } else if (argument == "--toggle") {
            options.request = "Toggle";
        } else if (argument == "--status") {
            options.status.emplace();
        } else if (argument == "--json") {
            status.json = true;
        } else if (argument == "--follow") {
            status.follow = true;
        } else if (argument == "--help" || argument == "-h") {
            options.answer = usage;
        } else if (argument == "--version") {
            options.answer = version;
        } else {
            std::fprintf(stderr, "sordin: unknown argument: %.*s\n%s", static_cast<int>(argument.size()),
                         argument.data(), usage);
            return std::nullopt;
        }
    }
    if (!options.status && (status.json || status.follow)) {
        std::fprintf(stderr, "sordin: --json and --follow need --status\n%s", usage);
        return std::nullopt;
    }
    if (options.status) {
        options.status = status;
    }
    return options;
}

}  // namespace sordin
