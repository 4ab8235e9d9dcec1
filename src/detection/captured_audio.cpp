// SPDX-License-Identifier: MIT
#include "detection/captured_audio.h"

#include "support/fatal.h"

#include <cstring>
#include <limits>

namespace sordin {

namespace {

constexpr double lowestRate = 1'000;
constexpr double highestRate = 768'000;

/// Calls `convert` with a value of the C++ type of `type`. Returns false for an unsupported type.
template <class Convert>
bool withSampleOf(SampleType type, Convert&& convert) {
    switch (type) {
    case SampleType::int16:
        convert(std::int16_t{});
        return true;
    case SampleType::int32:
        convert(std::int32_t{});
        return true;
    case SampleType::float32:
        convert(float{});
        return true;
    case SampleType::other:
        break;
    }
    return false;
}

float toFloat(std::int16_t sample) {
    return static_cast<float>(sample) / 32'768.0F;
}

float toFloat(std::int32_t sample) {
    return static_cast<float>(sample) / 2'147'483'648.0F;
}

float toFloat(float sample) {
    return sample;
}

/// The samples of `frames` frames, channel by channel; empty if there are too few bytes.
template <class Sample>
std::vector<float> convert(const StreamDescription& description, std::size_t frames,
                           const std::vector<std::byte>& bytes) {
    const std::size_t channels = description.channelCount;
    if (bytes.size() / sizeof(Sample) / channels < frames) {
        return {};
    }
    const std::size_t frameStride = description.interleaved ? channels : 1;
    const std::size_t channelStride = description.interleaved ? 1 : frames;
    std::vector<float> samples;
    samples.reserve(frames * channels);
    for (std::size_t channel = 0; channel < channels; ++channel) {
        for (std::size_t frame = 0; frame < frames; ++frame) {
            Sample sample;
            // The bytes may not be aligned for the sample type.
            std::memcpy(&sample, &bytes[(frame * frameStride + channel * channelStride) * sizeof(Sample)],
                        sizeof(Sample));
            samples.push_back(toFloat(sample));
        }
    }
    return samples;
}

}  // namespace

std::optional<PcmBuffer> pcmBuffer(const CapturedAudio& audio) {
    if (!audio.description) {
        return std::nullopt;
    }
    const StreamDescription& description = *audio.description;
    const bool rateUsable = description.sampleRate >= lowestRate && description.sampleRate <= highestRate;
    if (!rateUsable || description.channelCount == 0) {
        return std::nullopt;
    }
    if (audio.frameCount < 0 || audio.frameCount > std::numeric_limits<std::uint32_t>::max()) {
        fatal("captured audio has an invalid number of frames");
    }
    std::vector<float> samples;
    const auto read = [&](auto sample) {
        samples =
            convert<decltype(sample)>(description, static_cast<std::size_t>(audio.frameCount), audio.bytes);
    };
    if (!withSampleOf(description.sampleType, read) || samples.empty()) {
        return std::nullopt;
    }
    return PcmBuffer({description.sampleRate, description.channelCount}, std::move(samples));
}

}  // namespace sordin
