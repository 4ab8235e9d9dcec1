// SPDX-License-Identifier: MIT
#pragma once

namespace sordin {

/// Deleter for std::unique_ptr that calls the function `destroy` of a C library.
template <auto destroy>
struct Deleter {
    template <class Thing>
    void operator()(Thing* thing) const {
        destroy(thing);
    }
};

}  // namespace sordin
