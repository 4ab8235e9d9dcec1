// SPDX-License-Identifier: MIT
#pragma once

#include "detection/pcm_buffer.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>

namespace sordin {

/// One thing that may be heard, and how sure the tagger is of it.
struct SoundLabel {
    std::string identifier;  ///< in the tagger's own words, such as "speech"
    double confidence = 0;   ///< 0 to 1
};

/// Names what is heard in a stream of audio: a platform's classifier, or the project's own. Operations are
/// called by one thread at a time.
class SoundTagger {
public:
    /// Takes all labels of one result; the span is valid during the call.
    using LabelHandler = std::function<void(std::span<const SoundLabel>)>;

    virtual ~SoundTagger() = default;

    /// Sets what is called with each result, in order, on a thread of the tagger's choosing, also within
    /// analyze(). Once, before all else.
    virtual void onLabels(LabelHandler handler) = 0;

    /// Begins a new stream of buffers of this format. Returns why it cannot; everything then stays as it was.
    [[nodiscard]] virtual std::optional<std::string> prepare(const AudioFormat& format) = 0;

    /// The detector's hops are counted from this position of the stream that was prepared. Else from its
    /// first buffer.
    virtual void countHopsFrom(std::int64_t /*framePosition*/) {}

    /// Takes the buffer whose first frame has this position in the stream, 0 or more; where a position is
    /// beyond the end of the buffer before, silence was left out. Does nothing for a buffer of another format
    /// than the one prepared.
    virtual void analyze(const PcmBuffer& buffer, std::int64_t framePosition) = 0;
};

}  // namespace sordin
