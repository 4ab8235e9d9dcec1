// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
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

/// Makes a file as it is, or that it is gone, survive a loss of power. Waits for the disk.
std::error_code syncFile(const std::filesystem::path& path);

}  // namespace sordin
