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
    other,  ///< anything the detector cannot read
};

/// How the bytes of a CapturedAudio are to be read. Samples are in the machine's own byte order.
struct StreamDescription {
    double sampleRate = 0;  ///< Hz
    std::uint32_t channelCount = 0;
    SampleType sampleType = SampleType::other;
    bool interleaved = true;  ///< frame by frame; otherwise channel by channel
};

/// Audio as a capture delivers it, unchecked.
struct CapturedAudio {
    std::optional<StreamDescription> description;
    std::int64_t frameCount = 0;  ///< 0 to 2^32 - 1
    std::vector<std::byte> bytes;
};

/// The audio as the detector takes it, integers scaled to full scale 1. Nothing when it cannot be read: no
/// description, no channels, a sample type it does not know, a rate that is not finite or outside 1 to 768
/// kHz, no frames, or fewer bytes than the frames need. Bytes beyond the frames are left alone. A frame count
/// outside its range is a mistake of the program and ends it.
[[nodiscard]] std::optional<PcmBuffer> pcmBuffer(const CapturedAudio& audio);

}  // namespace sordin
