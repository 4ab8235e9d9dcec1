// SPDX-License-Identifier: MIT
#pragma once

#include "demo/broadcast.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace sordin::demo {

/// The two sets of rules, with the names that sordin-replay uses.
enum class Rules { standard, tuned };

[[nodiscard]] std::string nameOf(Rules rules);
[[nodiscard]] Rules otherThan(Rules rules);

/// Seconds of a broadcast with the volume down, in ads and in other content.
struct Faded {
    double ads = 0;
    double programme = 0;
};

/// The command line of a demonstration: an optional "--tuned", then a fixed number of arguments.
struct Arguments {
    Rules rules = Rules::standard;
    std::vector<std::string> rest;
};

/// Returns none if the command line is invalid. `count` is the number of arguments after "--tuned".
[[nodiscard]] std::optional<Arguments> readArguments(int argc, char** argv, std::size_t count);

/// Returns what a set of rules fades in a broadcast, by a replay of the recording with the program
/// sordin-replay. Returns none after a signal. Throws std::runtime_error if the replay fails, which has
/// printed the reason.
[[nodiscard]] std::optional<Faded> replayed(const std::string& program, Rules rules,
                                            const std::string& recording, const Broadcast& broadcast);

}  // namespace sordin::demo
