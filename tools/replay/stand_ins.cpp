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

}  // namespace sordin::replay
