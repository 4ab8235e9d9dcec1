// SPDX-License-Identifier: MIT
#pragma once

#include <cstdlib>

namespace sordin {

/// Ends the process if a property does not hold; the fuzzer then keeps the input.
inline void require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

}  // namespace sordin
