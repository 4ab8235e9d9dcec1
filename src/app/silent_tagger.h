// SPDX-License-Identifier: MIT
#pragma once

#include "platform/sound_tagger.h"

namespace sordin {

/// Stands where there is no sound model: it takes no stream, so nothing is recognised by its sound.
class SilentTagger final : public SoundTagger {
public:
    void onLabels(LabelHandler /*handler*/) override {}
    [[nodiscard]] std::optional<std::string> prepare(const AudioFormat& /*format*/) override {
        return "there is no sound model";
    }
    void analyze(const PcmBuffer& /*buffer*/, std::int64_t /*framePosition*/) override {}
};

}  // namespace sordin
