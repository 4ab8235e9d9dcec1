// SPDX-License-Identifier: MIT
#pragma once

#include "detection/detection_interfaces.h"
#include "platform/speech_recogniser.h"
#include "replay/cues.h"

#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace sordin::replay {

/// A classifier that ignores the audio and returns the scores of the last follow().
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

/// A transcriber that ignores the audio. During a session, its text is that of the last follow().
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

/// Forwards to another recognizer and records whether a session failed. The program continues silently after
/// such a failure, but an incomplete replay has to be reported.
class WatchedRecogniser final : public SpeechRecogniser {
public:
    explicit WatchedRecogniser(std::shared_ptr<SpeechRecogniser> recogniser)
        : recogniser_(std::move(recogniser)) {}

    /// Returns the first failure.
    [[nodiscard]] std::optional<std::string> failure() const;

    [[nodiscard]] bool authorised() const override { return recogniser_->authorised(); }
    [[nodiscard]] bool canRequestAuthorisation() const override {
        return recogniser_->canRequestAuthorisation();
    }
    void requestAuthorisation(std::function<void()> done) override {
        recogniser_->requestAuthorisation(std::move(done));
    }
    [[nodiscard]] bool available() const override { return recogniser_->available(); }
    [[nodiscard]] bool supportsOnDevice() const override { return recogniser_->supportsOnDevice(); }
    [[nodiscard]] std::shared_ptr<SpeechSession> start(TextHandler onText, ErrorHandler onError) override;
    void drain() override { recogniser_->drain(); }
    void rest() override { recogniser_->rest(); }

private:
    struct Failure {
        std::mutex lock;
        std::optional<std::string> first;
    };

    std::shared_ptr<SpeechRecogniser> recogniser_;
    std::shared_ptr<Failure> failure_ = std::make_shared<Failure>();  // sessions may outlive this object
};

}  // namespace sordin::replay
