// SPDX-License-Identifier: MIT
// Arbitrary streams in arbitrary buffers, with stops and format changes: the hops must not change.
#include "detection/stream_run.h"

#include <bit>
#include <cstdlib>
#include <fuzzer/FuzzedDataProvider.h>
#include <iostream>
#include <limits>

namespace {

using sordin::Segment;

constexpr std::size_t longestSegment = 30'000;  // frames; keeps a run fast

/// Converts a byte to a sample: mostly sound, some silence, some invalid values.
float sampleOf(std::uint8_t byte) {
    switch (byte) {
    case 0x80:
        return std::numeric_limits<float>::quiet_NaN();
    case 0x81:
        return std::numeric_limits<float>::infinity();
    case 0x82:
        return -std::numeric_limits<float>::max();
    case 0x83:
        return std::numeric_limits<float>::denorm_min();
    default:
        return static_cast<float>(std::bit_cast<std::int8_t>(byte)) / 100.0F;
    }
}

Segment arbitrarySegment(FuzzedDataProvider& data) {
    Segment segment;
    segment.format.sampleRate =
        data.PickValueInArray({1'000.0, 1'999.5, 4'000.0, 8'000.0, 11'025.0, 16'000.0, 48'000.0});
    segment.format.channelCount = data.ConsumeIntegralInRange(1U, 2U);
    segment.stopAfter = data.ConsumeIntegralInRange(0, 7) == 0;
    segment.forgetAfter = data.ConsumeIntegralInRange(0, 7) == 0;
    const auto frames = data.ConsumeIntegralInRange<std::size_t>(1, longestSegment);
    const auto pattern = data.ConsumeBytes<std::uint8_t>(data.ConsumeIntegralInRange<std::size_t>(1, 64));
    const float level = data.PickValueInArray({1.0F, 0.1F, 0.0001F, 0.0F});
    for (std::uint32_t channel = 0; channel < segment.format.channelCount; ++channel) {
        std::vector<float> samples(frames);
        for (std::size_t i = 0; i < frames && !pattern.empty(); ++i) {
            // The stride makes the pattern more than periodic.
            samples[i] = level * sampleOf(pattern[(i + i / 97 * channel + i * i / 4'099) % pattern.size()]);
        }
        segment.channels.push_back(std::move(samples));
    }
    return segment;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    FuzzedDataProvider data(bytes, size);
    std::vector<Segment> stream(1);
    stream[0] = arbitrarySegment(data);
    while (data.remaining_bytes() > 20 && stream.size() < 5) {
        stream.push_back(arbitrarySegment(data));
    }
    const auto whole = sordin::StreamRun::play(stream, [](double) { return longestSegment; });
    const auto cut = sordin::StreamRun::play(stream, [&](double) {
        return data.remaining_bytes() > 1 ? 1 + std::size_t{data.ConsumeIntegral<std::uint16_t>()} % 9'000
                                          : 777;
    });
    const auto difference = sordin::firstDifference(whole, cut);
    if (!difference.empty() || whole.find("nan") != std::string::npos ||
        whole.find("inf") != std::string::npos) {
        std::cerr << "whole and cut first differ in\n" << difference << '\n';
        std::abort();
    }
    return 0;
}
