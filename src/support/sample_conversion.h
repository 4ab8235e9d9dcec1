// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace sordin {

/// Converts a sample of -1 to 1 to a 16-bit integer. Clips louder samples.
[[nodiscard]] inline std::int16_t toInteger(float sample) {
    return static_cast<std::int16_t>(std::lround(std::clamp(sample, -1.0F, 1.0F) * 32767.0F));
}

/// Inverse of toInteger().
[[nodiscard]] inline float fromInteger(std::int16_t sample) {
    return static_cast<float>(sample) / 32767.0F;
}

}  // namespace sordin
