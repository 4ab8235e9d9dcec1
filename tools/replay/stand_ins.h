// SPDX-License-Identifier: MIT
#pragma once

#include "detection/detection_interfaces.h"
#include "replay/cues.h"

namespace sordin::replay {

/// A classifier that hears nothing and answers what it was last told.
class CueClassifier final : public SoundClassifying {
public:
    void follow(const CueState& state) { current_ = state.classification; }

    bool prepare(const AudioFormat& format) override;
    void analyze(const PcmBuffer& buffer, std::int64_t framePosition) override;
    [[nodiscard]] SoundClassification current() const override { return current_; }
    void reset() override { current_ = {}; }

private:
    SoundClassification current_;
};

/// A transcriber that hears nothing; while a session runs, its text is the one it was last told.
class CueTranscriber final : public SpeechTranscribing {
public:
    void follow(const CueState& state);

    [[nodiscard]] bool active() const override { return active_; }
    [[nodiscard]] std::string text() const override { return text_; }
    [[nodiscard]] bool available() const override { return available_; }
    void begin() override;
    void end() override { active_ = false; }
    void append(const PcmBuffer& buffer) override;

private:
    bool active_ = false;
    bool available_ = true;
    std::string text_;
};

}  // namespace sordin::replay
