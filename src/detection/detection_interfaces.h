// SPDX-License-Identifier: MIT
// Interfaces of the pipeline's collaborators. The pipeline calls all functions on its queue.
#pragma once

#include "detection/detection_records.h"
#include "detection/detector_rules.h"
#include "detection/pcm_buffer.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace sordin {

/// Classifies the sound that is playing.
class SoundClassifying {
public:
    virtual ~SoundClassifying() = default;

    /// Announces the format of the buffers that follow; called whenever it changes. Returns false if the
    /// classifier does not support the format. It then produces no scores, and detection goes on without
    /// them.
    virtual bool prepare(const AudioFormat& format) = 0;

    /// Sets the frame position at which the first hop of the prepared stream begins. The first buffer that is
    /// analyzed may lie later, because silent buffers are skipped.
    virtual void countHopsFrom(std::int64_t /*framePosition*/) {}

    /// Analyzes one buffer that is not silent. `framePosition` is the number of frames before it, silent ones
    /// included, so a gap between two buffers is skipped silence. Results may arrive later and on another
    /// thread.
    virtual void analyze(const PcmBuffer& buffer, std::int64_t framePosition) = 0;

    /// The latest scores. Safe to call while a result arrives on another thread.
    [[nodiscard]] virtual SoundClassification current() const = 0;

    /// Sets all scores to zero.
    virtual void reset() = 0;
};

/// Transcribes speech on this machine, in sessions of a few seconds.
class SpeechTranscribing {
public:
    virtual ~SpeechTranscribing() = default;

    /// Whether a session is running. Another thread may change this at any time.
    [[nodiscard]] virtual bool active() const = 0;

    /// The latest transcript of the running session, or of the last one if none runs; UTF-8. Another thread
    /// may change it at any time.
    [[nodiscard]] virtual std::string text() const = 0;

    /// Whether a session can begin now: permission is granted, and a recognizer that works without a network
    /// is installed. Must be cheap: the pipeline calls it up to twice per hop.
    [[nodiscard]] virtual bool available() const = 0;

    /// Begins a session with an empty text. On failure `active` stays false.
    virtual void begin() = 0;

    /// Ends the running session, if any.
    virtual void end() = 0;

    /// Feeds one buffer that is not silent to the session. Called only while `active`.
    virtual void append(const PcmBuffer& buffer) = 0;
};

/// Rates how strongly a text reads like an advertisement.
class TranscriptScoring {
public:
    virtual ~TranscriptScoring() = default;

    /// Returns 0 to 1 for a UTF-8 text of any length. Stateless, callable from any thread.
    [[nodiscard]] virtual float score(std::string_view text) const = 0;
};

/// Computes an ad confidence from the evidence of each hop.
class AdScoring {
public:
    virtual ~AdScoring() = default;

    /// Sets the rules for the hops that follow. Keeps the state from earlier hops.
    virtual void setRules(const DetectorRules& rules) = 0;

    /// Scores the next hop. Call exactly once per hop, silent ones included, in order.
    [[nodiscard]] virtual AdVerdict update(const DetectionSignals& signals) = 0;

    /// Clears the state from all earlier hops.
    virtual void reset() = 0;
};

}  // namespace sordin
