// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string_view>
#include <vector>

namespace sordin {

/// What is to be reported of the one that is running.
struct StatusRequest {
    bool json = false;
    bool follow = false;  ///< again after each change, until this process is ended
};

/// What the program was asked on its command line.
struct Options {
    bool hidden = false;                    ///< starts with its icon alone, as at login
    const char* answer = nullptr;           ///< is to be printed, and that is all
    const char* request = nullptr;          ///< of org.sordin.Sordin1, is to be called, and that is all
    std::optional<StatusRequest> status{};  ///< is to be reported, and that is all
};

/// `arguments` are those behind the program's name. None if there is one that it does not know, which is said
/// on stderr.
[[nodiscard]] std::optional<Options> parseOptions(const std::vector<std::string_view>& arguments);

}  // namespace sordin
