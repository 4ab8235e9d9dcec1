// SPDX-License-Identifier: MIT
#pragma once

#include "detection/detection_interfaces.h"
#include "detection/keyword_memory.h"

#include <memory>

namespace sordin {

/// Decides when the costly transcription runs: in short sessions while the sound looks suspicious. Keeps the
/// keyword level of the transcripts.
class TranscriptionSessions {
public:
    TranscriptionSessions(std::shared_ptr<SpeechTranscribing> transcriber,
                          std::shared_ptr<const TranscriptScoring> scorer);

    void setRules(const DetectorRules& rules) { keywords_.setRules(rules); }

    /// Inputs of manage() for one hop that is not silent.
    struct Hop {
        double now;            ///< seconds, pipeline clock
        float speech;          ///< classifier score of this hop
        float lastConfidence;  ///< of the previous hop
        bool inAd;             ///< state before this hop
        bool enabled;          ///< the user's transcription switch
    };

    /// Processes one hop: scores the running session's transcript, then ends the session or begins one. A
    /// session ends when it has run for more than 15 s, after 8 consecutive hops with a confidence below 0.15
    /// outside an ad, or when transcription is disabled. A session begins if transcription is enabled and
    /// available, the speech score is above 0.3, the confidence is at least 0.25 or an ad is in progress, and
    /// the last session ended more than 8 s ago.
    void manage(const Hop& hop);

    /// Returns the keyword level of this hop, 0 to 1, and applies one hop of decay.
    [[nodiscard]] float takeKeywordLevel() { return keywords_.take(); }

    /// Lowers the keyword level, because an ad has ended.
    void adEnded() { keywords_.adEnded(); }

    /// Ends the running session, if any, and resets the keyword level. Keeps the times of the sessions.
    void stop();

private:
    [[nodiscard]] bool mayContinue(const Hop& hop);

    std::shared_ptr<SpeechTranscribing> transcriber_;
    std::shared_ptr<const TranscriptScoring> scorer_;
    KeywordMemory keywords_;
    int lowCount_ = 0;  // consecutive hops of low confidence in the session
    double sessionStart_ = 0;
    double lastSessionEnd_ = 0;
};

}  // namespace sordin
