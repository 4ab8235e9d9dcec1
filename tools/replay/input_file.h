// SPDX-License-Identifier: MIT
#pragma once

#include "replay/input_error.h"

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <istream>
#include <string>
#include <system_error>

namespace sordin::replay {

/// Opens a file for reading. Throws InputError.
[[nodiscard]] inline std::ifstream openInput(const std::filesystem::path& path) {
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored)) {
        throw InputError(path.string() + ": is a folder");
    }
    errno = 0;
    std::ifstream input(path);
    if (!input) {
        throw InputError(path.string() + ": " + std::generic_category().message(errno));
    }
    return input;
}

/// Calls `take(line, where)` for each line that is not blank, without its line end; `where` is "name:number".
template <class Take>
void forEachLine(std::istream& input, const std::string& name, Take&& take) {
    std::string line;
    for (std::size_t number = 1; std::getline(input, line); ++number) {
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        if (line.find_first_not_of(" \t") != std::string::npos) {
            take(line, name + ":" + std::to_string(number));
        }
    }
    if (input.bad()) {
        throw InputError(name + ": cannot be read");
    }
}

}  // namespace sordin::replay
