// SPDX-License-Identifier: MIT
#include "detection/transcription_sessions.h"

#include <utility>

namespace sordin {

TranscriptionSessions::TranscriptionSessions(std::shared_ptr<SpeechTranscribing> transcriber,
                                             std::shared_ptr<const TranscriptScoring> scorer)
    : transcriber_(std::move(transcriber)), scorer_(std::move(scorer)) {}

void TranscriptionSessions::manage(const Hop& hop) {
    constexpr double longestSession = 15;
    constexpr double shortestPause = 8;
    if (transcriber_->active()) {
        keywords_.hear(scorer_->score(transcriber_->text()));
        const bool goOn = mayContinue(hop);
        if (!goOn || !hop.enabled || hop.now - sessionStart_ > longestSession) {
            transcriber_->end();
            lastSessionEnd_ = hop.now;
            lowCount_ = 0;
        }
    } else if (hop.enabled && hop.speech > 0.3F && (hop.lastConfidence >= 0.25F || hop.inAd) &&
               hop.now - lastSessionEnd_ > shortestPause && transcriber_->available()) {
        transcriber_->begin();
        keywords_.beginSession();
        sessionStart_ = hop.now;
    }
}

bool TranscriptionSessions::mayContinue(const Hop& hop) {
    constexpr int mostLowHops = 8;
    if (hop.inAd || hop.lastConfidence >= 0.15F) {
        lowCount_ = 0;
    } else {
        ++lowCount_;
    }
    return lowCount_ < mostLowHops;
}

void TranscriptionSessions::stop() {
    transcriber_->end();
    keywords_.forget();
}

}  // namespace sordin
