// SPDX-License-Identifier: MIT
#include "platform/linux/desktop/linux_permissions.h"

#include <cstdlib>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace sordin {

namespace {

namespace fs = std::filesystem;

/// Where the audio server is looked for.
fs::path serverSocket() {
    const char* name = std::getenv("PIPEWIRE_REMOTE");
    fs::path socket = name != nullptr && *name != '\0' ? name : "pipewire-0";
    for (const char* variable : {"PIPEWIRE_RUNTIME_DIR", "XDG_RUNTIME_DIR"}) {
        if (const char* folder = std::getenv(variable)) {
            return fs::path(folder) / socket;
        }
    }
    return socket;
}

}  // namespace

LinuxPermissions::LinuxPermissions(fs::path sandboxMark) : sandboxMark_(std::move(sandboxMark)) {}

bool LinuxPermissions::screenCapturePreflight() const {
    std::error_code ignored;
    // Outside a sandbox a server that is away is not a permission that is missing.
    return !fs::exists(sandboxMark_, ignored) || access(serverSocket().c_str(), R_OK | W_OK) == 0;
}

}  // namespace sordin
