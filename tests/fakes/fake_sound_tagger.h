// SPDX-License-Identifier: MIT
#pragma once

#include "platform/sound_tagger.h"

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace sordin {

/// A tagger that the test controls. It records its arguments and reports what the test sets. The state is
/// shared, because the classifier owns the tagger.
class FakeSoundTagger final : public SoundTagger {
public:
    struct State {
        std::optional<std::string> refusal;   ///< result of prepare()
        std::vector<std::int64_t> positions;  ///< of the analyzed buffers
        LabelHandler handler;

        void say(const std::vector<SoundLabel>& labels) const { handler(labels); }
    };

    explicit FakeSoundTagger(std::shared_ptr<State> state) : state_(std::move(state)) {}

    void onLabels(LabelHandler handler) override { state_->handler = std::move(handler); }
    std::optional<std::string> prepare(const AudioFormat& /*format*/) override { return state_->refusal; }
    void analyze(const PcmBuffer& /*buffer*/, std::int64_t framePosition) override {
        state_->positions.push_back(framePosition);
    }

private:
    std::shared_ptr<State> state_;
};

}  // namespace sordin
