// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <system_error>

namespace sordin {

/// Moves a file that cannot be read out of the way, so that it can be looked at later: beside its place, as
/// NAME.damaged-DATE, never over another. No error if there is nothing to move. `aside`, if given, is where
/// it lies now.
[[nodiscard]] std::error_code setAside(const std::filesystem::path& path,
                                       std::filesystem::path* aside = nullptr);

}  // namespace sordin
