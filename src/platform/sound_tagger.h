// SPDX-License-Identifier: MIT
#pragma once

#include "detection/pcm_buffer.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>

namespace sordin {

/// A kind of sound and the tagger's confidence that it is present.
struct SoundLabel {
    std::string identifier;  ///< in the tagger's vocabulary, such as "speech"
    double confidence = 0;   ///< 0 to 1
};

/// Labels the sounds in a stream of audio: the platform's classifier or the project's own. Operations are
/// called by one thread at a time.
class SoundTagger {
public:
    /// Receives all labels of one result; the span is valid during the call.
    using LabelHandler = std::function<void(std::span<const SoundLabel>)>;

    virtual ~SoundTagger() = default;

    /// Sets the handler for results. It is called in order, on any thread, possibly within analyze(). Called
    /// once, before all other operations.
    virtual void onLabels(LabelHandler handler) = 0;

    /// Begins a new stream of buffers of this format. On failure, returns the reason and changes nothing.
    [[nodiscard]] virtual std::optional<std::string> prepare(const AudioFormat& format) = 0;

    /// Aligns the results with the detector's hops, which start at this position (in frames) of the prepared
    /// stream. The default is the stream's first buffer.
    virtual void countHopsFrom(std::int64_t /*framePosition*/) {}

    /// Analyzes a buffer. `framePosition` is the position of its first frame in the stream, 0 or more; a gap
    /// after the previous buffer's end stands for skipped silence. Ignores buffers in a format other than the
    /// prepared one.
    virtual void analyze(const PcmBuffer& buffer, std::int64_t framePosition) = 0;
};

}  // namespace sordin
