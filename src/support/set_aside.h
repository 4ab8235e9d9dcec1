// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <system_error>

namespace sordin {

/// Renames an unreadable file, so that it can be examined later, to NAME.damaged-DATE in the same folder.
/// Never replaces another file. No error if the file does not exist. Stores the new path in `aside` if it is
/// given.
[[nodiscard]] std::error_code setAside(const std::filesystem::path& path,
                                       std::filesystem::path* aside = nullptr);

}  // namespace sordin
