// SPDX-License-Identifier: MIT
#pragma once

#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <numbers>
#include <string>

namespace sordin {

/// Writes a WAV file, 48 kHz, stereo, 16 bits: the same sine on both channels.
inline void writeToneFile(const std::filesystem::path& path, double seconds, double frequency,
                          double amplitude) {
    constexpr std::uint32_t rate = 48000;
    const auto frames = static_cast<std::uint32_t>(seconds * rate);
    std::string bytes;
    const auto put = [&bytes](std::uint32_t value, int size) {
        for (int i = 0; i < size; ++i) {
            bytes += static_cast<char>((value >> (8 * i)) & 0xff);
        }
    };
    bytes += "RIFF";
    put(36 + 4 * frames, 4);
    bytes += "WAVEfmt ";
    put(16, 4);
    put(1, 2);  // whole numbers
    put(2, 2);  // channels
    put(rate, 4);
    put(4 * rate, 4);
    put(4, 2);
    put(16, 2);
    bytes += "data";
    put(4 * frames, 4);
    for (std::uint32_t i = 0; i < frames; ++i) {
        const double value = amplitude * std::sin(2 * std::numbers::pi * frequency * i / rate);
        const auto sample = static_cast<std::uint32_t>(std::lround(32767 * value));
        put(sample, 2);
        put(sample, 2);
    }
    std::ofstream(path, std::ios::binary) << bytes;
}

}  // namespace sordin
