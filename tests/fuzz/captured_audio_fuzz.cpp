// SPDX-License-Identifier: MIT
// Arbitrary descriptions of arbitrary bytes: no read outside the bytes, and no invalid sound in the result.
#include "detection/captured_audio.h"
#include "fuzz/require.h"

#include <cmath>
#include <fuzzer/FuzzedDataProvider.h>
#include <limits>

namespace {

using sordin::require;

sordin::CapturedAudio arbitraryAudio(FuzzedDataProvider& data) {
    sordin::CapturedAudio audio;
    if (data.ConsumeIntegral<std::uint8_t>() != 0) {
        auto& description = audio.description.emplace();
        description.sampleRate = data.ConsumeBool() ? data.ConsumeFloatingPoint<double>()
                                                    : data.ConsumeIntegralInRange(0, 800'000);
        description.channelCount =
            data.ConsumeBool() ? data.ConsumeIntegral<std::uint32_t>() : data.ConsumeIntegralInRange(0U, 8U);
        description.sampleType =
            data.PickValueInArray({sordin::SampleType::int16, sordin::SampleType::int32,
                                   sordin::SampleType::float32, sordin::SampleType::other});
        description.interleaved = data.ConsumeBool();
    }
    audio.frameCount =
        data.ConsumeBool() ? data.ConsumeIntegral<std::uint32_t>() : data.ConsumeIntegralInRange(0, 200);
    const auto bytes = data.ConsumeRemainingBytes<std::uint8_t>();
    for (const std::uint8_t byte : bytes) {
        audio.bytes.push_back(std::byte{byte});
    }
    return audio;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    FuzzedDataProvider data(bytes, size);
    const auto audio = arbitraryAudio(data);
    const auto buffer = sordin::pcmBuffer(audio);
    if (!buffer) {
        return 0;
    }
    require(buffer->frameLength() == static_cast<std::size_t>(audio.frameCount));
    require(buffer->format().channelCount == audio.description->channelCount);
    for (std::uint32_t channel = 0; channel < buffer->format().channelCount; ++channel) {
        require(buffer->channel(channel).size() == buffer->frameLength());
        for (const float sample : buffer->channel(channel)) {
            require(std::abs(sample) <= sordin::PcmBuffer::loudestSample);
        }
    }
    return 0;
}
