// SPDX-License-Identifier: MIT
#pragma once

#include "detection/band_ring.h"

namespace sordin {

/// Tells how sharply the spectral character of the sound has just changed: the mean band levels of the newest
/// six hops against those of the six before.
class ContextChangeDetector {
public:
    /// Takes the bands of the newest hop; call once for every hop that has any. Returns 0 for a mean absolute
    /// shift of 2 dB or less, 1 for 10 dB or more, linear between; 0 until twelve hops have come.
    [[nodiscard]] float update(const Bands& bands);

    /// Starts anew, as after construction.
    void clear() { history_.clear(); }

private:
    static constexpr std::size_t half = 6;

    BandRing<2 * half> history_;
};

}  // namespace sordin
