// SPDX-License-Identifier: MIT
// The folders for the user's files. A returned folder need not exist.
#pragma once

#include <filesystem>
#include <system_error>

namespace sordin {

/// Settings: $XDG_CONFIG_HOME/Sordin, else ~/.config/Sordin.
[[nodiscard]] std::filesystem::path configFolder();

/// History: $XDG_DATA_HOME/Sordin, else ~/.local/share/Sordin.
[[nodiscard]] std::filesystem::path dataFolder();

/// Autostart entries: $XDG_CONFIG_HOME/autostart, else ~/.config/autostart.
[[nodiscard]] std::filesystem::path autostartFolder();

/// Creates the folder if it is missing. Returns an error if files cannot be created in it.
[[nodiscard]] std::error_code prepareFolder(const std::filesystem::path& folder);

}  // namespace sordin
