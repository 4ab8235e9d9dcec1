// SPDX-License-Identifier: MIT
// Generated speech masks, and the bytes of their files.
#pragma once

#include "classifier/model_files.h"
#include "classifier/speech_mask.h"

namespace sordin {

inline Bytes payloadOf(const SpeechMaskModel& mask) {
    Bytes bytes;
    for (const std::uint32_t size : {mask.rate, mask.window}) {
        append(bytes, size);
    }
    for (const float number : {mask.floor, mask.shift, mask.scale, mask.strength, mask.least}) {
        append(bytes, number);
    }
    append(bytes, mask.front);
    for (const auto* unit : {&mask.first, &mask.second}) {
        append(bytes, unit->input.in);
        append(bytes, unit->recurrent.in);
        append(bytes, unit->input.weights, {});
        append(bytes, unit->recurrent.weights, {});
        append(bytes, {}, unit->input.bias);
        append(bytes, {}, unit->recurrent.bias);
    }
    append(bytes, mask.gains);
    return bytes;
}

inline Bytes fileOf(const SpeechMaskModel& mask) {
    return fileOf(payloadOf(mask), "SORDINVM");
}

/// A small mask: windows of 64 samples at 16 kHz, five units.
inline SpeechMaskModel smallMask(std::mt19937& random) {
    const auto unit = [&random](std::size_t in) {
        return SpeechMaskModel::Recurrent{randomDense(random, in, 15), randomDense(random, 5, 15)};
    };
    return {16'000,
            64,
            1e-4F,
            4,
            4,
            1.5F,
            0.125F,
            randomDense(random, 33, 7),
            unit(7),
            unit(5),
            randomDense(random, 5, 33)};
}

}  // namespace sordin
