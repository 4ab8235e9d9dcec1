// SPDX-License-Identifier: MIT
#pragma once

#include "detection/pcm_buffer.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace sordin {

enum class SampleType {
    int16,
    int32,
    float32,
    other,  ///< not supported
};

/// Layout of the bytes of a CapturedAudio. Samples are in native byte order.
struct StreamDescription {
    double sampleRate = 0;  ///< Hz
    std::uint32_t channelCount = 0;
    SampleType sampleType = SampleType::other;
    bool interleaved = true;  ///< frame by frame; otherwise channel by channel
};

/// Captured audio, not yet validated.
struct CapturedAudio {
    std::optional<StreamDescription> description;
    std::int64_t frameCount = 0;  ///< 0 to 2^32 - 1
    std::vector<std::byte> bytes;
};

/// Converts captured audio to the detector's format, integers scaled to full scale 1. Returns nothing if the
/// description is missing, the sample type is not supported, the sample rate is not within 1 to 768 kHz,
/// there are no channels or no frames, or there are fewer bytes than the frames need. Ignores excess bytes. A
/// frame count outside its range is a programming error and ends the process.
[[nodiscard]] std::optional<PcmBuffer> pcmBuffer(const CapturedAudio& audio);

}  // namespace sordin
