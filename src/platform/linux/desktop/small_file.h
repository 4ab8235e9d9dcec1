// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <string>

namespace sordin {

/// The first 64 KiB of a regular file; empty if it cannot be read. Also for the files of /proc, which say
/// that they are empty.
[[nodiscard]] std::string readSmallFile(const std::filesystem::path& path);

}  // namespace sordin
