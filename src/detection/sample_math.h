// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <span>

namespace sordin {

/// Clamps `value` to 0 to 1. NaN becomes 0, so that it does not propagate.
[[nodiscard]] inline float clampToUnit(float value) {
    if (value >= 1.0F) {
        return 1.0F;
    }
    return value > 0.0F ? value : 0.0F;
}

/// Sum of a[i] * b[i] over the length of `a`; `b` must be at least as long. Adds in sixteen partial sums, so
/// that the compiler can vectorize it, and in a fixed order, so that the result is the same on every machine.
[[nodiscard]] inline float dotProduct(std::span<const float> a, std::span<const float> b) {
    constexpr std::size_t lanes = 16;
    std::array<float, lanes> partial{};
    const std::size_t whole = a.size() / lanes * lanes;
    const float* x = a.data();
    const float* y = b.data();
    for (std::size_t i = 0; i < whole; i += lanes) {
        for (std::size_t lane = 0; lane < lanes; ++lane) {
            partial[lane] += x[i + lane] * y[i + lane];
        }
    }
    for (std::size_t i = whole; i < a.size(); ++i) {
        partial[i - whole] += x[i] * y[i];
    }
    float sum = 0;
    for (const float part : partial) {
        sum += part;
    }
    return sum;
}

/// Root mean square; 0 if there are no samples.
[[nodiscard]] inline float rootMeanSquare(std::span<const float> samples) {
    if (samples.empty()) {
        return 0;
    }
    return std::sqrt(dotProduct(samples, samples) / static_cast<float>(samples.size()));
}

}  // namespace sordin
