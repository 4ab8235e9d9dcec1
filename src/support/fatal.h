// SPDX-License-Identifier: MIT
#pragma once

#include <cstdio>
#include <cstdlib>

namespace sordin {

/// Ends the process with one line on standard error. For faults that only a programming error can cause, such
/// as the overflow of a counter. Continuing would mean acting on a meaningless number.
[[noreturn]] inline void fatal(const char* reason) {
    std::fprintf(stderr, "sordin: %s\n", reason);
    std::abort();
}

}  // namespace sordin
