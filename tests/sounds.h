// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>
#include <vector>

namespace sordin {

inline std::vector<float> sine(double frequency, double rate, std::size_t samples, double amplitude = 0.5) {
    std::vector<float> audio(samples);
    for (std::size_t i = 0; i < samples; ++i) {
        const double angle = 2 * std::numbers::pi * frequency * static_cast<double>(i) / rate;
        audio[i] = static_cast<float>(amplitude * std::sin(angle));
    }
    return audio;
}

/// White noise with the given root mean square.
inline std::vector<float> noise(std::mt19937& random, float level, std::size_t samples) {
    std::normal_distribution<float> sample;
    std::vector<float> audio(samples);
    std::generate(audio.begin(), audio.end(), [&] { return level * sample(random); });
    return audio;
}

}  // namespace sordin
