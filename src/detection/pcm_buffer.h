// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace sordin {

/// Sample rate and channel count of a PcmBuffer.
struct AudioFormat {
    double sampleRate = 0;  ///< Hz
    std::uint32_t channelCount = 0;

    bool operator==(const AudioFormat&) const = default;
};

/// Audio in the detector's format: 32-bit floats, full scale 1, planar (one channel after the other).
///
/// All samples lie within +-`loudestSample`. The constructor replaces larger ones and NaN by 0. Otherwise one
/// damaged sample would make the running average level, and so the evidence of all later hops, infinite or
/// NaN.
class PcmBuffer {
public:
    /// 96 dB above full scale: above 16-bit integers that were mistaken for floats, far below an overflow.
    static constexpr float loudestSample = 65536.0F;

    /// `samples` holds all frames of channel 0, then those of channel 1, and so on. If its size is not a
    /// multiple of the channel count, the excess samples at the end are ignored.
    PcmBuffer(AudioFormat format, std::vector<float> samples);

    [[nodiscard]] const AudioFormat& format() const { return format_; }
    [[nodiscard]] std::size_t frameLength() const { return frames_; }

    /// The samples of one channel; empty if the channel does not exist.
    [[nodiscard]] std::span<const float> channel(std::uint32_t index) const;

private:
    AudioFormat format_;
    std::vector<float> samples_;
    std::size_t frames_;
};

}  // namespace sordin
