// SPDX-License-Identifier: MIT
#pragma once

#include <bit>
#include <cstdint>

namespace sordin {

/// Natural logarithm of a positive, finite, normal float. The error is about 1e-7, absolute near 1 and
/// relative elsewhere. Unlike the C library's logarithm, it gives the same bits on every processor and
/// vectorizes.
[[nodiscard]] inline float naturalLogarithm(float value) {
    constexpr std::int32_t rootOfHalf = 0x3F3504F3;  // the bits of sqrt(1/2)
    // value = fraction * 2^exponent, fraction from sqrt(1/2) to sqrt(2)
    const auto bits = std::bit_cast<std::int32_t>(value);
    const std::int32_t exponent = (bits - rootOfHalf) >> 23;
    const auto fraction = std::bit_cast<float>(bits - exponent * 0x00800000);
    // ln(fraction) = 2 artanh(s) as a power series; the omitted terms are below 1e-9.
    const float s = (fraction - 1.0F) / (fraction + 1.0F);
    const float q = s * s;
    const float series =
        2.0F * s + s * q * (2.0F / 3.0F + q * (2.0F / 5.0F + q * (2.0F / 7.0F + q * (2.0F / 9.0F))));
    // ln 2 is split in two. The first part has so few bits that its product with the exponent is exact.
    const auto power = static_cast<float>(exponent);
    return power * 0.693359375F + (series + power * -2.12194440e-4F);
}

}  // namespace sordin
