// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string_view>
#include <vector>

namespace sordin {

/// The options of --status.
struct StatusRequest {
    bool json = false;
    bool follow = false;  ///< report again after each change, until this process ends
};

/// The parsed command line.
struct Options {
    bool hidden = false;            ///< start with only the icon, as at login
    const char* answer = nullptr;   ///< text to print before exiting; may be null
    const char* request = nullptr;  ///< method of org.sordin.Sordin1 to call before exiting; may be null
    std::optional<StatusRequest> status{};  ///< report to print before exiting
};

/// Parses the arguments without the program's name. On an invalid argument, prints an error to stderr and
/// returns none.
[[nodiscard]] std::optional<Options> parseOptions(const std::vector<std::string_view>& arguments);

}  // namespace sordin
