// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

namespace sordin {

/// The number of calls of the global operator new so far. Link allocation_counter.cpp, which replaces the
/// operator.
[[nodiscard]] std::size_t allocationCount();

}  // namespace sordin
