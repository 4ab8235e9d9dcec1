// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace sordin {

/// A sample of -1 to 1 as a 16-bit integer; what is louder is clipped.
[[nodiscard]] inline std::int16_t toInteger(float sample) {
    return static_cast<std::int16_t>(std::lround(std::clamp(sample, -1.0F, 1.0F) * 32767.0F));
}

/// The inverse of toInteger().
[[nodiscard]] inline float fromInteger(std::int16_t sample) {
    return static_cast<float>(sample) / 32767.0F;
}

}  // namespace sordin
