// SPDX-License-Identifier: MIT
#pragma once

#include "detection/pcm_buffer.h"

#include <functional>
#include <memory>
#include <string>

namespace sordin {

/// One recognition that is fed as the audio comes. Operations are called by one thread at a time and return
/// at once.
class SpeechSession {
public:
    virtual ~SpeechSession() = default;

    /// Takes one more buffer, of any format.
    virtual void append(const PcmBuffer& buffer) = 0;

    /// No more audio will come.
    virtual void endAudio() = 0;

    /// The text of what was appended may still come, then nothing more.
    virtual void finish() = 0;
};

/// Turns speech into text, on this machine alone: a platform's recogniser, or one that is installed.
class SpeechRecogniser {
public:
    /// Takes the whole text so far, UTF-8; every text replaces the one before.
    using TextHandler = std::function<void(const std::string&)>;
    /// Takes what went wrong, one line. The session gives no more text.
    using ErrorHandler = std::function<void(const std::string&)>;

    virtual ~SpeechRecogniser() = default;

    /// Whether it may be used, found out anew and without asking anybody: permitted, and installed where it
    /// does not come with the platform. Any thread.
    [[nodiscard]] virtual bool authorised() const = 0;

    /// Whether asking for authorisation can lead to it. Any thread.
    [[nodiscard]] virtual bool canRequestAuthorisation() const = 0;

    /// Asks for authorisation; calls `done` once, on any thread, when there is an answer.
    virtual void requestAuthorisation(std::function<void()> done) = 0;

    /// Whether a session that starts now can work. Any thread.
    [[nodiscard]] virtual bool available() const = 0;

    /// Whether no audio and no text leave this machine. Any thread.
    [[nodiscard]] virtual bool supportsOnDevice() const = 0;

    /// Begins a session. The handlers are called on a thread of the recogniser's choosing, in order, also
    /// before this returns and after the session was finished or dropped. Null if it cannot begin.
    [[nodiscard]] virtual std::shared_ptr<SpeechSession> start(TextHandler onText, ErrorHandler onError) = 0;

    /// Returns when everything appended so far has been heard and its text given: for replays, which do not
    /// wait for a clock.
    virtual void drain() = 0;

    /// There will be no session for a while: hands back what memory it can.
    virtual void rest() = 0;
};

}  // namespace sordin
