// SPDX-License-Identifier: MIT
#pragma once

#include "detection/captured_audio.h"
#include "platform/system_audio_capture.h"

#include <functional>
#include <optional>

namespace sordin {

/// A platform's way to hear what the computer plays. Moves data only: when to open and close it, and what to
/// tell the owner, is LoopbackCapture's business. Operations are called by one thread at a time and do not
/// wait for long; handlers are called on any thread, with locks of the platform's held: they may only post.
class LoopbackSource {
public:
    /// What stands in the way of opening.
    struct Obstacle {
        SystemAudioCapture::Failure failure;
        bool passing;  ///< whether it may go by itself
    };

    struct Handlers {
        std::function<void()> opened;
        /// It ended by itself, or could not be opened; nothing follows.
        std::function<void(SystemAudioCapture::Failure)> ended;
        std::function<void(CapturedAudio)> heard;
    };

    virtual ~LoopbackSource() = default;

    /// Sets what is called after the answer of obstacle() may have changed. Once, before all else.
    virtual void onChange(std::function<void()> handler) = 0;

    /// What stands in the way now; nothing when it can be opened.
    [[nodiscard]] virtual std::optional<Obstacle> obstacle() = 0;

    /// Begins to listen. Either `opened` or `ended` is called, then or later. Only while closed.
    virtual void open(Handlers handlers) = 0;

    /// Whether what is heard is of use for now: a source that is open may rest while it is not. It is of use
    /// when it has been opened. Does nothing while closed.
    virtual void setWanted(bool wanted) = 0;

    /// Whether it is open where it would not be opened now, since the sound has moved to another server.
    [[nodiscard]] virtual bool outdated() const { return false; }

    /// Ends listening. No call of a handler begins after it has returned. Does nothing while closed.
    virtual void close() = 0;

    /// The failure in words of this system.
    [[nodiscard]] virtual SystemAudioCapture::Failure failure(SystemAudioCapture::Error error) const {
        return SystemAudioCapture::Failure(error);
    }
};

}  // namespace sordin
