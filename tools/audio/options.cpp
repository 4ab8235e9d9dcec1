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
            throw std::invalid_argument("unknown option, or one without its value");
        }
    }
    if (static_cast<std::size_t>(optind) < arguments.size()) {
        throw std::invalid_argument("there is nothing to give but options");
    }
    return options;
}

std::string helpText() {
    return R"(Usage: sordin-audio [OPTION...]
Hears what the computer plays and fades the default output device, for developers: the same parts as the
application, without a detector. What an earlier run left faded is brought back first.

      --folder=FOLDER   where what has to be brought back is kept (default: the application's own)
      --json            one JSON object a line
      --seconds=S       end after S seconds
      --help            this text

Every half second it prints the level of what was heard, the default device with its volume, and who is playing.
On standard input it takes, a line each:
  duck [FRACTION [SECONDS]]   fade down to FRACTION of the volume (0) within SECONDS (0.15)
  restore [SECONDS]           fade back within SECONDS (0.6)
  restore-now                 put the volume back at once
  stop, start                 stop and start listening
  quit                        put the volume back and end, as the end of input, SIGINT, SIGTERM and SIGHUP do
)";
}

}  // namespace sordin::audio
