// SPDX-License-Identifier: MIT
#pragma once

#include "demo/broadcast.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace sordin::demo {

/// The two sets of rules, by the names that sordin-replay gives them.
enum class Rules { standard, tuned };

[[nodiscard]] std::string nameOf(Rules rules);
[[nodiscard]] Rules otherThan(Rules rules);

/// Seconds of a broadcast with the volume down.
struct Faded {
    double ads = 0;
    double programme = 0;
};

/// The command line of a demonstration: "--tuned", if given, and then `count` arguments.
struct Arguments {
    Rules rules = Rules::standard;
    std::vector<std::string> rest;
};

/// Nothing if the command line makes no sense.
[[nodiscard]] std::optional<Arguments> readArguments(int argc, char** argv, std::size_t count);

/// What a set of rules fades of a broadcast, by a replay of the recording with the program sordin-replay.
/// Nothing if a signal has come. Throws std::runtime_error if the replay fails; it has printed the reason.
[[nodiscard]] std::optional<Faded> replayed(const std::string& program, Rules rules,
                                            const std::string& recording, const Broadcast& broadcast);

}  // namespace sordin::demo
