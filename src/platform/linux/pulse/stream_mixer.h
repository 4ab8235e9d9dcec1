// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <span>
#include <vector>

namespace sordin::pulse {

/// Adds up streams of samples that arrive in pieces, each at its own time. What has arrived of every stream
/// is complete; a stream that falls behind the others by more than the patience is silent until it catches
/// up, so that none holds up the rest. For one thread at a time.
class StreamMixer {
public:
    using Stream = std::uint32_t;

    /// `patience` in samples.
    explicit StreamMixer(std::size_t patience) : patience_(patience) {}

    /// Adds samples to a stream, which begins with its first.
    void add(Stream stream, std::span<const float> samples);

    /// Ends a stream; what has arrived of it is kept for the next take().
    void remove(Stream stream);

    /// The sum of all streams, as far as it is complete.
    [[nodiscard]] std::vector<float> take();

private:
    const std::size_t patience_;
    std::map<Stream, std::vector<float>> waiting_;
    std::vector<float> ended_;  // of streams that have ended, added up
};

}  // namespace sordin::pulse
