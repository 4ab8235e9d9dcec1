// SPDX-License-Identifier: MIT
#pragma once

#include "support/numbers.h"

namespace sordin {

/// The confidence that makes an ad at a sensitivity of 0 to 1: from 0.8 down to 0.35, 0.575 in the middle.
[[nodiscard]] inline float detectionThreshold(double sensitivity) {
    return nearestFloat(0.8 + sensitivity * -0.45);
}

}  // namespace sordin
