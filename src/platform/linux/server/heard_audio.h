// SPDX-License-Identifier: MIT
#pragma once

#include "platform/system_audio_capture.h"

#include <cstdint>
#include <span>

namespace sordin {

/// Packs mono samples at the capture's rate for the sample handler.
[[nodiscard]] inline CapturedAudio heardAudio(std::span<const float> samples) {
    const auto bytes = std::as_bytes(samples);
    return {StreamDescription{SystemAudioCapture::sampleRate, 1, SampleType::float32, true},
            static_cast<std::int64_t>(samples.size()),
            {bytes.begin(), bytes.end()}};
}

}  // namespace sordin
