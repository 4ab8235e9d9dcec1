// SPDX-License-Identifier: MIT
#pragma once

namespace sordin {

/// Has a unique pointer end what a C library made, by that library's own function.
template <auto destroy>
struct Deleter {
    template <class Thing>
    void operator()(Thing* thing) const {
        destroy(thing);
    }
};

}  // namespace sordin
