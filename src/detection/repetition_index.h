// SPDX-License-Identifier: MIT
#pragma once

#include "detection/band_ring.h"

#include <array>
#include <optional>
#include <vector>

namespace sordin {

/// Knows ads again: learns short fingerprints of them and says on every hop how like any of them the last
/// hops are. Fingerprints live in memory only.
class RepetitionIndex {
public:
    RepetitionIndex();

    /// Takes the bands of the newest hop; call once for every hop that has any. Returns 0 for a best cosine
    /// similarity of 0.8 or less, 1 for 0.98 or more, linear between; 0 with nothing learned or a flat sound.
    [[nodiscard]] float push(const Bands& bands);

    /// Learns the last eight hops, unless fewer have come or they are flat; returns whether it did. Beyond
    /// 200 fingerprints the oldest is forgotten.
    bool learnCurrent();

    /// Forgets all fingerprints, keeps the recent hops.
    void forget() { learned_.clear(); }

    /// Forgets the `count` fingerprints that were learned last (all if there are fewer), keeps the recent
    /// hops.
    void forgetLast(std::size_t count);

    /// Forgets the recent hops, keeps all fingerprints.
    void clearRecent() { ring_.clear(); }

    [[nodiscard]] std::size_t learnedCount() const { return learned_.size(); }

private:
    static constexpr std::size_t window = 8;
    static constexpr std::size_t maxLearned = 200;

    /// Hop t, band b at t * bandCount + b; of unit length.
    using Fingerprint = std::array<float, window * bandCount>;

    /// The last hops, each band centred on its own mean and all scaled to unit length, so that only the
    /// movement of the bands counts, not their level, tilt or gain. Nothing when they are flat or fewer than
    /// eight.
    [[nodiscard]] std::optional<Fingerprint> signature() const;

    BandRing<window> ring_;
    std::vector<Fingerprint> learned_;  // oldest first
};

}  // namespace sordin
