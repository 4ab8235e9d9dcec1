// SPDX-License-Identifier: MIT
#include "platform/linux/storage/user_folders.h"

#include "support/atomic_file.h"

#include <cerrno>
#include <cstdlib>
#include <unistd.h>

namespace sordin {

namespace {

namespace fs = std::filesystem;

/// Returns the folder in the variable, else `underHome` in the user's home.
fs::path folder(const char* variable, const char* underHome) {
    const char* set = std::getenv(variable);
    // The XDG Base Directory Specification excludes relative paths.
    if (set != nullptr && fs::path(set).is_absolute()) {
        return set;
    }
    const char* home = std::getenv("HOME");
    // A relative HOME would depend on the working directory.
    return fs::path(home != nullptr && fs::path(home).is_absolute() ? home : "/") / underHome;
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

std::error_code prepareFolder(const fs::path& folder) {
    std::error_code error = createFolders(folder);
    if (!error && ::access(folder.c_str(), W_OK | X_OK) != 0) {
        error.assign(errno, std::generic_category());
    }
    return error;
}

}  // namespace sordin
