// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>

namespace sordin {

/// Where the running program is, as the system knows it; where it does not say, what the program was called
/// by (`argv[0]`), made absolute.
[[nodiscard]] std::filesystem::path programPath(const char* calledBy);

}  // namespace sordin
