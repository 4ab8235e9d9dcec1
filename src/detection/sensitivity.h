// SPDX-License-Identifier: MIT
#pragma once

#include "support/numbers.h"

namespace sordin {

/// The detection threshold for a sensitivity of 0 to 1: falls linearly from 0.8 to 0.35; 0.575 at 0.5.
[[nodiscard]] inline float detectionThreshold(double sensitivity) {
    return nearestFloat(0.8 + sensitivity * -0.45);
}

}  // namespace sordin
