// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

namespace sordin {

/// How often this program has called the global operator new so far. Link allocation_counter.cpp, which
/// replaces it.
[[nodiscard]] std::size_t allocationCount();

}  // namespace sordin
