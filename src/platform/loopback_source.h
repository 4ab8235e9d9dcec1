// SPDX-License-Identifier: MIT
#pragma once

#include "detection/captured_audio.h"
#include "platform/system_audio_capture.h"

#include <functional>
#include <optional>

namespace sordin {

/// A platform's way to record what the computer plays. It only moves data; LoopbackCapture decides when to
/// open and close it and what to report. Operations are called by one thread at a time and return quickly.
/// Handlers are called on any thread, with locks of the platform held: they must only post.
class LoopbackSource {
public:
    /// A condition that prevents opening.
    struct Obstacle {
        SystemAudioCapture::Failure failure;
        bool passing;  ///< whether it may go away by itself
    };

    struct Handlers {
        std::function<void()> opened;
        /// The source ended by itself, or could not be opened. No further call follows.
        std::function<void(SystemAudioCapture::Failure)> ended;
        std::function<void(CapturedAudio)> heard;
    };

    virtual ~LoopbackSource() = default;

    /// Sets the handler for possible changes of obstacle() and outdated(). Called once, before all other
    /// operations.
    virtual void onChange(std::function<void()> handler) = 0;

    /// Returns the current obstacle to opening; none if the source can be opened.
    [[nodiscard]] virtual std::optional<Obstacle> obstacle() = 0;

    /// Starts recording. Calls `opened` or `ended`, before or after the return. Allowed only while closed.
    virtual void open(Handlers handlers) = 0;

    /// Sets whether the audio is currently wanted; an open source may pause while it is not. open() resets
    /// this to true. Does nothing while closed.
    virtual void setWanted(bool wanted) = 0;

    /// Returns whether the source is open on a server that it would not choose now, because the sound moved
    /// to another.
    [[nodiscard]] virtual bool outdated() const { return false; }

    /// Stops recording. No handler call begins after it has returned. Does nothing while closed.
    virtual void close() = 0;

    /// Returns the failure with this platform's text for the user.
    [[nodiscard]] virtual SystemAudioCapture::Failure failure(SystemAudioCapture::Error error) const {
        return SystemAudioCapture::Failure(error);
    }
};

}  // namespace sordin
