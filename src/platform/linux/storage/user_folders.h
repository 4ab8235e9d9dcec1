// SPDX-License-Identifier: MIT
// Where the program keeps what is the user's. A folder need not exist.
#pragma once

#include <filesystem>

namespace sordin {

/// For settings: $XDG_CONFIG_HOME/Sordin, else ~/.config/Sordin.
[[nodiscard]] std::filesystem::path configFolder();

/// For the history: $XDG_DATA_HOME/Sordin, else ~/.local/share/Sordin.
[[nodiscard]] std::filesystem::path dataFolder();

}  // namespace sordin
