// SPDX-License-Identifier: MIT
#pragma once

#include "detection/band_ring.h"

namespace sordin {

/// Measures how sharply the spectral character of the sound has changed: compares the mean band levels of the
/// newest six hops with those of the six hops before.
class ContextChangeDetector {
public:
    /// Takes the bands of the newest hop; call once for every hop that is not silent. Returns 0 for a mean
    /// absolute shift of 2 dB or less, 1 for 10 dB or more, linear between. Returns 0 until there are twelve
    /// hops.
    [[nodiscard]] float update(const Bands& bands);

    /// Returns to the state after construction.
    void clear() { history_.clear(); }

private:
    static constexpr std::size_t half = 6;

    BandRing<2 * half> history_;
};

}  // namespace sordin
