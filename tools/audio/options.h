// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace sordin::audio {

/// What the command line asks for.
struct Options {
    bool help = false;
    bool json = false;
    std::optional<double> seconds;  ///< how long to run; for ever if absent
    std::filesystem::path folder;   ///< where what has to be restored is kept
};

/// Throws std::invalid_argument with one line.
[[nodiscard]] Options parseOptions(std::vector<std::string> arguments);

/// The text of --help.
[[nodiscard]] std::string helpText();

}  // namespace sordin::audio
