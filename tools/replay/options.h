// SPDX-License-Identifier: MIT
#pragma once

#include "replay/replay.h"

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace sordin::replay {

/// A set of rules and its name.
struct NamedRules {
    std::string name;  ///< empty if --rules was not given; the output then omits the name
    DetectorRules rules;
};

/// The parsed command line.
struct Options {
    bool help = false;
    bool version = false;
    bool hops = false;
    bool json = false;
    bool transcripts = false;
    std::optional<std::string> cues;
    std::optional<std::string> model;
    bool noModel = false;
    std::optional<std::string> truth;
    Settings settings;                  ///< its rules are replaced by each of `rules` in turn
    std::vector<NamedRules> rules{{}};  ///< not empty
    std::optional<std::string> picture;
    std::vector<std::string> files;
};

/// The command line is invalid. The message is one line.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Throws UsageError. After --help or --version, the other options are not checked.
[[nodiscard]] Options parseOptions(std::vector<std::string> arguments);

/// The text of --help.
[[nodiscard]] std::string helpText();

}  // namespace sordin::replay
