// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>

namespace sordin {

/// The path of the running program as reported by the system. If that is not available, the absolute path of
/// `calledBy` (`argv[0]`).
[[nodiscard]] std::filesystem::path programPath(const char* calledBy);

}  // namespace sordin
