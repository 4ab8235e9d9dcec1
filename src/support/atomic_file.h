// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace sordin {

/// The events that newly written contents survive.
enum class Durability {
    programEnd,   ///< the end of the process, crashes included
    lossOfPower,  ///< also a loss of power; waits for the disk
};

/// Replaces the contents of a file atomically: readers see the old or the new contents, never a part, even if
/// the program dies in between. The new file is accessible to its owner only. Follows symbolic links and
/// replaces their target. The folder must exist. On an error the old file is unchanged and no temporary file
/// is left.
[[nodiscard]] std::error_code replaceFile(const std::filesystem::path& path, std::string_view contents,
                                          Durability durability);

/// The contents of a regular file. Returns nothing if the file cannot be read to its end or is longer than
/// `longest` bytes. Never blocks on a named pipe and never throws, even on an I/O error.
[[nodiscard]] std::optional<std::string> readWholeFile(const std::filesystem::path& path,
                                                       std::size_t longest);

/// Creates a folder and its missing parents, accessible to their owner only. No error if it exists.
std::error_code createFolders(const std::filesystem::path& folder);

/// Makes the current state of a file, or its deletion, survive a loss of power. Waits for the disk.
std::error_code syncFile(const std::filesystem::path& path);

}  // namespace sordin
