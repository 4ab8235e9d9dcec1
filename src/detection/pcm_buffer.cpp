// SPDX-License-Identifier: MIT
#include "detection/pcm_buffer.h"

#include <cmath>
#include <utility>

namespace sordin {

PcmBuffer::PcmBuffer(AudioFormat format, std::vector<float> samples)
    : format_(format),
      samples_(std::move(samples)),
      frames_(format.channelCount == 0 ? 0 : samples_.size() / format.channelCount) {
    for (float& sample : samples_) {
        sample = std::abs(sample) <= loudestSample ? sample : 0.0F;
    }
}

std::span<const float> PcmBuffer::channel(std::uint32_t index) const {
    if (index >= format_.channelCount) {
        return {};
    }
    return std::span(samples_).subspan(index * frames_, frames_);
}

}  // namespace sordin
