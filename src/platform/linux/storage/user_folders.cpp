// SPDX-License-Identifier: MIT
#include "platform/linux/storage/user_folders.h"

#include <cstdlib>

namespace sordin {

namespace {

namespace fs = std::filesystem;

fs::path folder(const char* variable, const char* underHome) {
    const char* set = std::getenv(variable);
    if (set != nullptr && fs::path(set).is_absolute()) {  // others are to be ignored
        return fs::path(set) / "Sordin";
    }
    const char* home = std::getenv("HOME");
    return fs::path(home != nullptr ? home : "/") / underHome / "Sordin";
}

}  // namespace

fs::path configFolder() {
    return folder("XDG_CONFIG_HOME", ".config");
}

fs::path dataFolder() {
    return folder("XDG_DATA_HOME", ".local/share");
}

}  // namespace sordin
