// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace sordin {

/// Sample rate and channels of a PcmBuffer. The samples themselves are always 32-bit floats, channel by
/// channel.
struct AudioFormat {
    double sampleRate = 0;  ///< Hz
    std::uint32_t channelCount = 0;

    bool operator==(const AudioFormat&) const = default;
};

/// A stretch of audio as the detector takes it: 32-bit floats, full scale 1, one channel after the other.
///
/// Every sample lies within +-`loudestSample`: what is beyond (or not a number) cannot be sound and becomes 0
/// when the buffer is made. Without that, one damaged sample would turn the running average level, and with
/// it every later hop, into infinity or not-a-number.
class PcmBuffer {
public:
    /// 96 dB above full scale: louder than 16-bit integers mistaken for floats, far below what overflows.
    static constexpr float loudestSample = 65536.0F;

    /// `samples` holds all frames of channel 0, then of channel 1 and so on. What does not fill all channels
    /// equally is dropped from the end.
    PcmBuffer(AudioFormat format, std::vector<float> samples);

    [[nodiscard]] const AudioFormat& format() const { return format_; }
    [[nodiscard]] std::size_t frameLength() const { return frames_; }

    /// The samples of one channel; empty when there is no such channel.
    [[nodiscard]] std::span<const float> channel(std::uint32_t index) const;

private:
    AudioFormat format_;
    std::vector<float> samples_;
    std::size_t frames_;
};

}  // namespace sordin
