// SPDX-License-Identifier: MIT
#include "platform/linux/storage/user_folders.h"

#include <cstdlib>

namespace sordin {

namespace {

namespace fs = std::filesystem;

/// What the variable names, else the folder under the user's home.
fs::path folder(const char* variable, const char* underHome) {
    const char* set = std::getenv(variable);
    if (set != nullptr && fs::path(set).is_absolute()) {  // others are to be ignored
        return set;
    }
    const char* home = std::getenv("HOME");
    return fs::path(home != nullptr ? home : "/") / underHome;
}

}  // namespace

fs::path configFolder() {
    return folder("XDG_CONFIG_HOME", ".config") / "Sordin";
}

fs::path dataFolder() {
    return folder("XDG_DATA_HOME", ".local/share") / "Sordin";
}

fs::path autostartFolder() {
    return folder("XDG_CONFIG_HOME", ".config") / "autostart";
}

}  // namespace sordin
