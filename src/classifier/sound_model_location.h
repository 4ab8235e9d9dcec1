// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <optional>

namespace sordin {

/// The sound model that came with a program, whose own path is `program`: in the data folder that goes with
/// the program's folder when both are installed; otherwise in the build tree that the program lies in, or, if
/// it lies in none, in the data folder that the build was configured for. None where there is no such file.
[[nodiscard]] std::optional<std::filesystem::path> findSoundModel(const std::filesystem::path& program);

}  // namespace sordin
