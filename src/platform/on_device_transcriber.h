// SPDX-License-Identifier: MIT
#pragma once

#include "detection/detection_interfaces.h"
#include "platform/speech_recogniser.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace sordin {

/// Transcribes a few seconds at a time with an on-device recognizer and keeps the text. Errors are not
/// reported; the session then has no text. Call `begin`, `end` and `append` from one thread at a time; the
/// rest from any thread.
class OnDeviceTranscriber final : public SpeechTranscribing {
public:
    /// `recogniser` may be null; then no session ever begins.
    explicit OnDeviceTranscriber(std::shared_ptr<SpeechRecogniser> recogniser);
    ~OnDeviceTranscriber() override;  ///< ends the session
    OnDeviceTranscriber(const OnDeviceTranscriber&) = delete;
    OnDeviceTranscriber& operator=(const OnDeviceTranscriber&) = delete;

    /// Whether the user and the system permit use of the recognizer. Never prompts the user.
    [[nodiscard]] bool authorised() const;

    /// Whether a request can succeed. If false, do not call requestAuthorization().
    [[nodiscard]] bool canRequestAuthorization() const;

    /// Requests permission. Calls `done` once, on any thread, after any answer.
    void requestAuthorization(std::function<void()> done);

    [[nodiscard]] bool active() const override;

    /// Returns the text of the running or, if none runs, the latest session.
    [[nodiscard]] std::string text() const override;

    [[nodiscard]] bool available() const override;

    /// Ends the running session first, if any. Does nothing if the recognizer is not available.
    void begin() override;
    void end() override;
    void append(const PcmBuffer& buffer) override;

    /// Ends the session and lets the recognizer release its resources, because transcription was switched
    /// off.
    void rest();

private:
    class State;

    const std::shared_ptr<State> state_;  // session handlers, which may be called late, hold it weakly
    const std::shared_ptr<SpeechRecogniser> recogniser_;
};

}  // namespace sordin
