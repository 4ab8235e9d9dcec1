// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <span>
#include <vector>

namespace sordin::pulse {

/// Mixes streams of samples that arrive in pieces at different times. The sum is complete up to the point
/// that all streams have reached. A stream that lags behind the longest one by more than the patience counts
/// as silent until it catches up, so that it does not delay the others. Call it from one thread at a time.
class StreamMixer {
public:
    using Stream = std::uint32_t;

    /// `patience` is in samples.
    explicit StreamMixer(std::size_t patience) : patience_(patience) {}

    /// Adds samples to a stream; the first call for a stream creates it.
    void add(Stream stream, std::span<const float> samples);

    /// Ends a stream; take() still returns its samples.
    void remove(Stream stream);

    /// Removes and returns the sum of all streams as far as it is complete.
    [[nodiscard]] std::vector<float> take();

private:
    const std::size_t patience_;
    std::map<Stream, std::vector<float>> waiting_;
    std::vector<float> ended_;  // the sum of ended streams
};

}  // namespace sordin::pulse
