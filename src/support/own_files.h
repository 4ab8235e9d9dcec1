// SPDX-License-Identifier: MIT
// Where a program finds what came with it. The program's own path is `program`. When both are installed, that
// is in the folder that goes with the program's; otherwise in the build tree that the program lies in, or, if
// it lies in none, in the folder that the build was configured for.
#pragma once

#include <filesystem>
#include <optional>

namespace sordin {

/// A data file; `name` is relative to the project's part of the data folder. None where there is no such
/// file.
[[nodiscard]] std::optional<std::filesystem::path> findDataFile(const std::filesystem::path& program,
                                                                const std::filesystem::path& name);

/// A program that others of ours start. None where there is no such file.
[[nodiscard]] std::optional<std::filesystem::path> findHelper(const std::filesystem::path& program,
                                                              const std::filesystem::path& name);

}  // namespace sordin
