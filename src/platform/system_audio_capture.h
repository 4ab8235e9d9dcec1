// SPDX-License-Identifier: MIT
#pragma once

#include "detection/captured_audio.h"
#include "support/serial_queue.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace sordin {

/// Delivers what the computer plays, from all applications but this one: 16 kHz, one channel, float32.
///
/// All operations may be called from any thread and return at once. Completions and the stop handler are
/// called on a thread of the capture's own, one at a time; they must not wait for anything. A capture that is
/// destroyed ends by itself: a start in flight reports that it was cancelled, nothing else is called any
/// more.
class SystemAudioCapture {
public:
    enum class Error {
        noDisplay,       ///< on systems that capture sound with the screen
        unreachable,     ///< no audio server answers
        noOutput,        ///< the audio server has no audio output
        connectionLost,  ///< the audio server went away
        refused,         ///< the audio server ended the capture, or never began it
        cancelled,       ///< stopped before it had started
        alreadyRunning,  ///< started a second time
    };

    /// What the user is told of an error, where the system has no better words.
    [[nodiscard]] static std::string description(Error error);

    struct Failure {
        Error error;
        std::string description;  ///< what the user is told

        explicit Failure(Error what) : Failure(what, SystemAudioCapture::description(what)) {}
        Failure(Error what, std::string text) : error(what), description(std::move(text)) {}
    };

    using SampleHandler = std::function<void(const CapturedAudio&)>;
    using StartCompletion = std::function<void(std::optional<Failure>)>;

    static constexpr int sampleRate = 16'000;

    virtual ~SystemAudioCapture() = default;

    /// Starts, waiting up to ten seconds for an audio server that can be heard. `handler` is called on
    /// `queue` with everything that is heard, in order; while nothing plays, with half a second of zeros
    /// every half second. `completion` is called exactly once: with nothing when the capture runs, or with
    /// what went wrong. While a capture runs or is starting, another start fails and changes nothing.
    virtual void start(std::shared_ptr<SerialQueue> queue, SampleHandler handler,
                       StartCompletion completion) = 0;

    /// Stops. A start in flight is cancelled. `completion` is called, exactly once, when the handler has been
    /// called for the last time; with nothing to stop, soon. A start asked for meanwhile begins after the
    /// stop.
    virtual void stop(std::function<void()> completion) = 0;

    /// Sets what is called, once, when a running capture ends by itself; it is stopped then and may be
    /// started again.
    virtual void onStop(std::function<void(std::optional<Failure>)> handler) = 0;

    /// Sets what is called when, while nothing runs or is starting, that goes away which stood in the way of
    /// a start: an audio server has come up, say.
    virtual void onReady(std::function<void()> handler) = 0;
};

}  // namespace sordin
