// SPDX-License-Identifier: MIT
#include "replay/stand_ins.h"

namespace sordin::replay {

bool CueClassifier::prepare(const AudioFormat& /*format*/) {
    return true;
}

void CueClassifier::analyze(const PcmBuffer& /*buffer*/, std::int64_t /*framePosition*/) {}

void CueTranscriber::follow(const CueState& state) {
    available_ = state.available;
    if (active_) {
        text_ = state.transcript;
    }
}

void CueTranscriber::begin() {
    if (available_) {
        active_ = true;
        text_.clear();
    }
}

void CueTranscriber::append(const PcmBuffer& /*buffer*/) {}

std::optional<std::string> WatchedRecogniser::failure() const {
    const std::scoped_lock lock(failure_->lock);
    return failure_->first;
}

std::shared_ptr<SpeechSession> WatchedRecogniser::start(TextHandler onText, ErrorHandler onError) {
    return recogniser_->start(std::move(onText),
                              [failure = failure_, onError = std::move(onError)](const std::string& why) {
                                  {
                                      const std::scoped_lock lock(failure->lock);
                                      failure->first = failure->first.value_or(why);
                                  }
                                  onError(why);
                              });
}

}  // namespace sordin::replay
