// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

namespace sordin {

/// The number of calls of the global operator new so far. Needs allocation_counter.cpp, which replaces it.
[[nodiscard]] std::size_t allocationCount();

}  // namespace sordin
