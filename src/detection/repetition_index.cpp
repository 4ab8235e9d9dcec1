// SPDX-License-Identifier: MIT
#include "detection/repetition_index.h"

#include "detection/sample_math.h"

#include <algorithm>
#include <cmath>

namespace sordin {

RepetitionIndex::RepetitionIndex() {
    learned_.reserve(maxLearned);
}

float RepetitionIndex::push(const Bands& bands) {
    ring_.push(bands);
    if (learned_.empty()) {
        return 0;
    }
    const auto current = signature();
    if (!current) {
        return 0;
    }
    float best = 0;
    for (const Fingerprint& fingerprint : learned_) {
        best = std::max(best, dotProduct(*current, fingerprint));
    }
    return clampToUnit((best - 0.8F) / 0.18F);
}

bool RepetitionIndex::learnCurrent() {
    const auto current = signature();
    if (!current) {
        return false;
    }
    if (learned_.size() == maxLearned) {
        learned_.erase(learned_.begin());
    }
    learned_.push_back(*current);
    return true;
}

void RepetitionIndex::forgetLast(std::size_t count) {
    learned_.resize(learned_.size() - std::min(count, learned_.size()));
}

std::optional<RepetitionIndex::Fingerprint> RepetitionIndex::signature() const {
    if (!ring_.full()) {
        return std::nullopt;
    }
    Fingerprint fingerprint;
    for (std::size_t band = 0; band < bandCount; ++band) {
        float sum = 0;
        for (std::size_t t = 0; t < window; ++t) {
            sum += ring_[t][band];
        }
        const float mean = sum * 0.125F;
        for (std::size_t t = 0; t < window; ++t) {
            fingerprint[t * bandCount + band] = ring_[t][band] - mean;
        }
    }
    // A window below this norm is too flat to identify an ad: silence or a steady tone.
    constexpr float flatNorm = 3.0F;
    const float norm = std::sqrt(dotProduct(fingerprint, fingerprint));
    if (!(norm > flatNorm)) {
        return std::nullopt;
    }
    const float scale = 1.0F / norm;
    for (float& entry : fingerprint) {
        entry *= scale;
    }
    return fingerprint;
}

}  // namespace sordin
