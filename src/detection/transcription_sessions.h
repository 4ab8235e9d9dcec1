// SPDX-License-Identifier: MIT
#pragma once

#include "detection/detection_interfaces.h"
#include "detection/keyword_memory.h"

#include <memory>

namespace sordin {

/// Decides when the costly transcription runs, in short sessions while something looks suspicious, and keeps
/// what the transcripts said: a keyword level that fades.
class TranscriptionSessions {
public:
    TranscriptionSessions(std::shared_ptr<SpeechTranscribing> transcriber,
                          std::shared_ptr<const TranscriptScoring> scorer);

    void setRules(const DetectorRules& rules) { keywords_.setRules(rules); }

    /// What the decision rests on, one hop that is not silent.
    struct Hop {
        double now;            ///< seconds
        float speech;          ///< classifier score of this hop
        float lastConfidence;  ///< of the hop before
        bool inAd;             ///< before this hop
        bool enabled;          ///< the user wants transcription
    };

    /// One step: reads the running session's text, ends it or begins one. A session lasts until more than 15
    /// s have passed, until 8 hops in a row showed a confidence below 0.15 outside an ad, or until
    /// transcription is switched off; the next begins more than 8 s later, on speech with a confidence of
    /// 0.25 or inside an ad.
    void manage(const Hop& hop);

    /// The keyword level of this hop, 0 to 1, which then fades.
    [[nodiscard]] float takeKeywordLevel() { return keywords_.take(); }

    /// An ad has ended: what was said counts for less.
    void adEnded() { keywords_.adEnded(); }

    /// Ends the session, if any, and forgets what was said; the times of sessions stay.
    void stop();

private:
    [[nodiscard]] bool mayContinue(const Hop& hop);

    std::shared_ptr<SpeechTranscribing> transcriber_;
    std::shared_ptr<const TranscriptScoring> scorer_;
    KeywordMemory keywords_;
    int lowCount_ = 0;  // consecutive hops of low confidence during a session
    double sessionStart_ = 0;
    double lastSessionEnd_ = 0;
};

}  // namespace sordin
