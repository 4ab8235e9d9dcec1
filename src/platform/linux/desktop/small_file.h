// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <string>

namespace sordin {

/// Returns the first 64 KiB of a regular file; empty if it cannot be read. Also reads the files of /proc,
/// whose reported size is 0.
[[nodiscard]] std::string readSmallFile(const std::filesystem::path& path);

}  // namespace sordin
