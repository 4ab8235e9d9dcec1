// SPDX-License-Identifier: MIT
#pragma once

#include "platform/sound_tagger.h"

namespace sordin {

/// Replaces a missing sound model. It rejects every stream, so that all scores stay 0.
class SilentTagger final : public SoundTagger {
public:
    void onLabels(LabelHandler /*handler*/) override {}
    [[nodiscard]] std::optional<std::string> prepare(const AudioFormat& /*format*/) override {
        return "no sound model";
    }
    void analyze(const PcmBuffer& /*buffer*/, std::int64_t /*framePosition*/) override {}
};

}  // namespace sordin
