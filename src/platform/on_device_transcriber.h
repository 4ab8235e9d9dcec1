// SPDX-License-Identifier: MIT
#pragma once

#include "detection/detection_interfaces.h"
#include "platform/speech_recogniser.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace sordin {

/// Transcribes a few seconds at a time with a recogniser that works on this machine alone, and holds what it
/// said. What goes wrong is not told: a session then has no text. `begin`, `end` and `append` are for one
/// thread at a time; all else is for any thread.
class OnDeviceTranscriber final : public SpeechTranscribing {
public:
    /// Null where there is no recogniser: then there is never a session.
    explicit OnDeviceTranscriber(std::shared_ptr<SpeechRecogniser> recogniser);
    ~OnDeviceTranscriber() override;  ///< ends the session
    OnDeviceTranscriber(const OnDeviceTranscriber&) = delete;
    OnDeviceTranscriber& operator=(const OnDeviceTranscriber&) = delete;

    /// Whether the recogniser may be used; never asks the user.
    [[nodiscard]] bool authorised() const;

    /// Whether asking can lead anywhere. Where it cannot, requestAuthorization() must not be called.
    [[nodiscard]] bool canRequestAuthorization() const;

    /// Asks for permission; calls `done` once, on any thread, when there is an answer, whatever it is.
    void requestAuthorization(std::function<void()> done);

    [[nodiscard]] bool active() const override;

    /// Stays after the session, until the next begins.
    [[nodiscard]] std::string text() const override;

    [[nodiscard]] bool available() const override;

    /// Ends a session that is running.
    void begin() override;
    void end() override;
    void append(const PcmBuffer& buffer) override;

    /// Transcription was switched off: the recogniser need not be kept ready.
    void rest();

private:
    class State;

    const std::shared_ptr<State> state_;  // weakly known to the handlers of sessions, which may come late
    const std::shared_ptr<SpeechRecogniser> recogniser_;
};

}  // namespace sordin
