// SPDX-License-Identifier: MIT
// Where the program keeps what is the user's. A folder need not exist.
#pragma once

#include <filesystem>
#include <system_error>

namespace sordin {

/// For settings: $XDG_CONFIG_HOME/Sordin, else ~/.config/Sordin.
[[nodiscard]] std::filesystem::path configFolder();

/// For the history: $XDG_DATA_HOME/Sordin, else ~/.local/share/Sordin.
[[nodiscard]] std::filesystem::path dataFolder();

/// For what the desktop starts at login: $XDG_CONFIG_HOME/autostart, else ~/.config/autostart.
[[nodiscard]] std::filesystem::path autostartFolder();

/// Creates a folder where it is missing; an error if no files can be made in it.
[[nodiscard]] std::error_code prepareFolder(const std::filesystem::path& folder);

}  // namespace sordin
