// SPDX-License-Identifier: MIT
#pragma once

#include "detection/band_ring.h"

#include <array>
#include <optional>
#include <vector>

namespace sordin {

/// Recognizes repeated ads: learns spectral fingerprints of eight hops (4 s) and compares the last hops with
/// all of them. Keeps the fingerprints in memory only.
class RepetitionIndex {
public:
    RepetitionIndex();

    /// Takes the bands of the newest hop; call once for every hop that is not silent. Returns the similarity
    /// to the best fingerprint: 0 for a cosine similarity of 0.8 or less, 1 for 0.98 or more, linear between.
    /// Returns 0 if nothing is learned, or if the last hops are flat or fewer than eight.
    [[nodiscard]] float push(const Bands& bands);

    /// Learns a fingerprint of the last eight hops. Returns false if there are fewer or they are flat. Keeps
    /// at most 200 fingerprints and drops the oldest.
    bool learnCurrent();

    /// Forgets all fingerprints. Keeps the recent hops.
    void forget() { learned_.clear(); }

    /// Forgets the `count` newest fingerprints, or all if there are fewer. Keeps the recent hops.
    void forgetLast(std::size_t count);

    /// Forgets the recent hops. Keeps all fingerprints.
    void clearRecent() { ring_.clear(); }

    [[nodiscard]] std::size_t learnedCount() const { return learned_.size(); }

private:
    static constexpr std::size_t window = 8;
    static constexpr std::size_t maxLearned = 200;

    /// Index t * bandCount + b holds hop t (0 is the oldest), band b. The Euclidean norm is 1.
    using Fingerprint = std::array<float, window * bandCount>;

    /// The fingerprint of the last hops. Each band is centered on its mean and the whole is scaled to unit
    /// norm, so that only the movement of the bands counts, not the level, the spectral tilt or the gain.
    /// Empty if the hops are flat or fewer than eight.
    [[nodiscard]] std::optional<Fingerprint> signature() const;

    BandRing<window> ring_;
    std::vector<Fingerprint> learned_;  // oldest first
};

}  // namespace sordin
