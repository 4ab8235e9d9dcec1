// SPDX-License-Identifier: MIT
#pragma once

#include <cstdio>
#include <cstdlib>

namespace sordin {

/// Ends the process with one line on standard error. For arithmetic and calls that cannot go wrong unless the
/// program itself is wrong: going on would act on a number that means nothing.
[[noreturn]] inline void fatal(const char* reason) {
    std::fprintf(stderr, "sordin: %s\n", reason);
    std::abort();
}

}  // namespace sordin
