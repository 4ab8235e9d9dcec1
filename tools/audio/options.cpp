// SPDX-License-Identifier: MIT
#include "audio/options.h"

#include "platform/linux/storage/user_folders.h"
#include "support/numbers.h"

#include <array>
#include <getopt.h>
#include <stdexcept>

namespace sordin::audio {

namespace {

enum Code : int { json = 1, seconds, folder, help };

constexpr std::array<option, 5> longOptions{{
    {"json", no_argument, nullptr, json},
    {"seconds", required_argument, nullptr, seconds},
    {"folder", required_argument, nullptr, folder},
    {"help", no_argument, nullptr, help},
    {nullptr, 0, nullptr, 0},
}};

double positiveNumber(const std::string& text) {
    const auto value = parseNumber(text);
    if (!value || *value <= 0) {
        throw std::invalid_argument("--seconds takes a number above 0, not '" + text + "'");
    }
    return *value;
}

}  // namespace

Options parseOptions(std::vector<std::string> arguments) {
    std::vector<char*> argv;
    argv.reserve(arguments.size() + 1);
    for (std::string& argument : arguments) {
        argv.push_back(argument.data());
    }
    argv.push_back(nullptr);

    Options options;
    options.folder = configFolder();
    opterr = 0;
    optind = 1;
    int code = 0;
    while ((code = getopt_long(static_cast<int>(arguments.size()), argv.data(), "", longOptions.data(),
                               nullptr)) != -1) {
        switch (code) {
        case json:
            options.json = true;
            break;
        case seconds:
            options.seconds = positiveNumber(optarg);
            break;
        case folder:
            options.folder = optarg;
            break;
        case help:
            options.help = true;
            break;
        default:
            throw std::invalid_argument("unknown option or missing value");
        }
    }
    if (static_cast<std::size_t>(optind) < arguments.size()) {
        throw std::invalid_argument("unexpected argument");
    }
    return options;
}

std::string helpText() {
    return R"(Usage: sordin-audio [OPTION...]
Captures what the computer plays and fades the default output device, for developers. Uses the same
parts as the application, except the detector. First restores a volume that an earlier run left faded.

      --folder=FOLDER   folder of the pending restores (default: the application's)
      --json            print one JSON object per line
      --seconds=S       exit after S seconds
      --help            print this help

Prints twice a second the level of the captured audio, the default output device with its volume, and
the applications that play. Reads commands from standard input, one per line:
  duck [FRACTION [SECONDS]]   fade to FRACTION (0) of the volume within SECONDS (0.15)
  restore [SECONDS]           fade back within SECONDS (0.6)
  restore-now                 restore the volume at once
  stop, start                 stop and start capturing
  quit                        restore the volume and exit, like the end of input, SIGINT, SIGTERM, SIGHUP
)";
}

}  // namespace sordin::audio
