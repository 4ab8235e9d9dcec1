// SPDX-License-Identifier: MIT
// Finds the files that belong to the program. `program` is the path of the running program. The search begins
// in the installation folder relative to the program. If the file is not there, it continues in the build
// tree that contains the program, or, outside a build tree, in the installation folder that the build was
// configured with.
#pragma once

#include <filesystem>
#include <optional>

namespace sordin {

/// A data file; `name` is relative to the project's data folder. Returns nothing if the file does not exist.
[[nodiscard]] std::optional<std::filesystem::path> findDataFile(const std::filesystem::path& program,
                                                                const std::filesystem::path& name);

/// A helper program of the project. Returns nothing if the file does not exist.
[[nodiscard]] std::optional<std::filesystem::path> findHelper(const std::filesystem::path& program,
                                                              const std::filesystem::path& name);

}  // namespace sordin
