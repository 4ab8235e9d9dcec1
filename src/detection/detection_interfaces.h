// SPDX-License-Identifier: MIT
// What the pipeline needs of others, so that it never knows who they are. All are called on the pipeline's
// queue.
#pragma once

#include "detection/detection_records.h"
#include "detection/detector_rules.h"
#include "detection/pcm_buffer.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace sordin {

/// Says what kind of sound is playing.
class SoundClassifying {
public:
    virtual ~SoundClassifying() = default;

    /// Announces the format of the buffers that follow; called whenever it changes. False if it cannot be
    /// classified: the classifier then answers nothing, and nobody minds.
    virtual bool prepare(const AudioFormat& format) = 0;

    /// The hops of the stream that has been prepared are counted from this frame position; silent buffers,
    /// which are not analysed, may come first.
    virtual void countHopsFrom(std::int64_t /*framePosition*/) {}

    /// Takes one buffer that is not silent. `framePosition` counts all frames before it, silent ones
    /// included, so a gap in it is silence that was left out. Results may come later and on another thread.
    virtual void analyze(const PcmBuffer& buffer, std::int64_t framePosition) = 0;

    /// The latest scores. Safe against a result arriving on another thread.
    [[nodiscard]] virtual SoundClassification current() const = 0;

    /// Returns `current` to all zeros.
    virtual void reset() = 0;
};

/// Turns speech into text on this machine, a few seconds at a time.
class SpeechTranscribing {
public:
    virtual ~SpeechTranscribing() = default;

    /// Whether a session is running. May change at any time.
    [[nodiscard]] virtual bool active() const = 0;

    /// The latest transcript of the running or the last session, UTF-8. May change at any time.
    [[nodiscard]] virtual std::string text() const = 0;

    /// Whether a session could begin now: permitted, installed, and able to work on this machine alone. Asked
    /// up to twice a hop.
    [[nodiscard]] virtual bool available() const = 0;

    /// Begins a session with an empty text. May fail silently; `active` tells.
    virtual void begin() = 0;

    /// Ends the session, if there is one.
    virtual void end() = 0;

    /// Takes one buffer that is not silent; called only while `active`.
    virtual void append(const PcmBuffer& buffer) = 0;
};

/// Says how much a text reads like an advertisement.
class TranscriptScoring {
public:
    virtual ~TranscriptScoring() = default;

    /// 0 to 1 for a UTF-8 text of any length. Keeps nothing, so any thread may ask.
    [[nodiscard]] virtual float score(std::string_view text) const = 0;
};

/// Turns the evidence of each hop into a confidence.
class AdScoring {
public:
    virtual ~AdScoring() = default;

    /// The rules of the hops that follow. What is remembered of earlier hops stays.
    virtual void setRules(const DetectorRules& rules) = 0;

    /// One step: called exactly once per hop, in order.
    [[nodiscard]] virtual AdVerdict update(const DetectionSignals& signals) = 0;

    /// Forgets all earlier hops.
    virtual void reset() = 0;
};

}  // namespace sordin
