// SPDX-License-Identifier: MIT
#include "detection/context_change_detector.h"

#include "detection/sample_math.h"

#include <cmath>

namespace sordin {

float ContextChangeDetector::update(const Bands& bands) {
    history_.push(bands);
    if (!history_.full()) {
        return 0;
    }
    float shift = 0;
    for (std::size_t band = 0; band < bandCount; ++band) {
        float older = 0;
        float newer = 0;
        for (std::size_t i = 0; i < half; ++i) {
            older += history_[i][band];
            newer += history_[half + i][band];
        }
        shift += std::abs(newer - older) / static_cast<float>(half);
    }
    return clampToUnit((shift * 0.125F - 2.0F) * 0.125F);
}

}  // namespace sordin
