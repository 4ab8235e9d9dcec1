// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace sordin {

/// What freshly written contents survive.
enum class Durability {
    programEnd,   ///< the end of the program, however it comes
    lossOfPower,  ///< that of the machine too; waits for the disk
};

/// Replaces the contents of a file as a whole: whoever reads it, and a program that dies in between, sees the
/// old contents or the new, never a part. The file is readable by its owner only; a symbolic link to a
/// file stays and its target is replaced. The folder must exist. On an error the old file is as it was and no
/// other file is left behind.
[[nodiscard]] std::error_code replaceFile(const std::filesystem::path& path, std::string_view contents,
                                          Durability durability);

/// The contents of a regular file; none if it cannot be read to its end, or is longer than `longest` bytes.
/// Never waits for a pipe's other end and never throws, also when the disk or the network behind the file
/// fails.
[[nodiscard]] std::optional<std::string> readWholeFile(const std::filesystem::path& path,
                                                       std::size_t longest);

/// Creates a folder, and those above it, where they are missing, for their owner only.
std::error_code createFolders(const std::filesystem::path& folder);

/// Makes a file as it is, or that it is gone, survive a loss of power. Waits for the disk.
std::error_code syncFile(const std::filesystem::path& path);

}  // namespace sordin
