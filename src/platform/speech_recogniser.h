// SPDX-License-Identifier: MIT
#pragma once

#include "detection/pcm_buffer.h"

#include <functional>
#include <memory>
#include <string>

namespace sordin {

/// One recognition, which receives the audio as it arrives. Operations are called by one thread at a time and
/// return at once.
class SpeechSession {
public:
    virtual ~SpeechSession() = default;

    /// Takes the next buffer, in any format.
    virtual void append(const PcmBuffer& buffer) = 0;

    /// Marks the end of the audio.
    virtual void endAudio() = 0;

    /// Ends the session. The text of the audio so far may still arrive, then nothing more.
    virtual void finish() = 0;
};

/// Turns speech into text on this machine only: the platform's recognizer or an installed one.
class SpeechRecogniser {
public:
    /// Receives the whole text so far, UTF-8, which replaces the previous one.
    using TextHandler = std::function<void(const std::string&)>;
    /// Receives the error as one line. The session produces no more text.
    using ErrorHandler = std::function<void(const std::string&)>;

    virtual ~SpeechRecogniser() = default;

    /// Whether the recognizer is permitted, and installed if it does not come with the platform. Checks anew
    /// each time and never prompts the user. Any thread.
    [[nodiscard]] virtual bool authorised() const = 0;

    /// Whether requestAuthorisation() can succeed. Any thread.
    [[nodiscard]] virtual bool canRequestAuthorisation() const = 0;

    /// Requests authorization. Calls `done` once, on any thread, after any answer.
    virtual void requestAuthorisation(std::function<void()> done) = 0;

    /// Whether a session that starts now can work. Any thread.
    [[nodiscard]] virtual bool available() const = 0;

    /// Whether all audio and text stay on this machine. Any thread.
    [[nodiscard]] virtual bool supportsOnDevice() const = 0;

    /// Begins a session; returns null if this fails. The handlers are called in order, on any thread,
    /// possibly before the return and after the session is finished or dropped.
    [[nodiscard]] virtual std::shared_ptr<SpeechSession> start(TextHandler onText, ErrorHandler onError) = 0;

    /// Waits until all appended audio is processed and its text delivered. For replays, which run faster than
    /// real time.
    virtual void drain() = 0;

    /// Releases memory, because no session is expected for a while.
    virtual void rest() = 0;
};

}  // namespace sordin
