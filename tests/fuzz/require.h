// SPDX-License-Identifier: MIT
#pragma once

#include <cstdlib>

namespace sordin {

/// What has to hold for any input; the fuzzer keeps one for which it does not.
inline void require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

}  // namespace sordin
