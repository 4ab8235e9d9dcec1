// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace sordin::audio {

/// The parsed command line.
struct Options {
    bool help = false;
    bool json = false;
    std::optional<double> seconds;  ///< how long to run; no limit if absent
    std::filesystem::path folder;   ///< the folder of the pending restores
};

/// Throws std::invalid_argument with a message of one line.
[[nodiscard]] Options parseOptions(std::vector<std::string> arguments);

/// The text of --help.
[[nodiscard]] std::string helpText();

}  // namespace sordin::audio
