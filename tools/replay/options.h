// SPDX-License-Identifier: MIT
#pragma once

#include "replay/replay.h"

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace sordin::replay {

/// Rules and what they are called.
struct NamedRules {
    std::string name;  ///< empty if none were asked for: then they are not named in the output
    DetectorRules rules;
};

/// What the command line asks for.
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
    Settings settings;                  ///< its rules are those of `rules`, one after the other
    std::vector<NamedRules> rules{{}};  ///< not empty
    std::optional<std::string> picture;
    std::vector<std::string> files;
};

/// The command line makes no sense. The text is one line.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Throws UsageError. With --help or --version nothing else matters.
[[nodiscard]] Options parseOptions(std::vector<std::string> arguments);

/// The text of --help.
[[nodiscard]] std::string helpText();

}  // namespace sordin::replay
