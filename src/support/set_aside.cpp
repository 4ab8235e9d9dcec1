// SPDX-License-Identifier: MIT
#include "support/set_aside.h"

#include <array>
#include <ctime>
#include <string>

namespace sordin {

namespace {

namespace fs = std::filesystem;

std::string dateText() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    std::array<char, 32> text{};
    std::strftime(text.data(), text.size(), "%Y%m%d-%H%M%S", &local);
    return text.data();
}

}  // namespace

std::error_code setAside(const fs::path& path, fs::path* place) {
    const fs::path first = path.string() + ".damaged-" + dateText();
    fs::path aside = first;
    std::error_code error;
    // In a folder that cannot be searched, exists() returns false, and rename() reports the error.
    for (int i = 2; fs::exists(fs::symlink_status(aside, error)); ++i) {
        aside = first.string() + "-" + std::to_string(i);
    }
    error.clear();
    fs::rename(path, aside, error);
    if (place != nullptr && !error) {
        *place = aside;
    }
    return error == std::errc::no_such_file_or_directory ? std::error_code() : error;
}

}  // namespace sordin
