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

/// Captures the audio of all applications except this one: 16 kHz, one channel, float32.
///
/// All operations may be called from any thread and return at once. Completions and the stop handler are
/// called on the capture's own thread, one at a time; they must not block. Destroying the capture ends it: a
/// start in flight fails with `cancelled`, and no other call follows.
class SystemAudioCapture {
public:
    enum class Error {
        noDisplay,       ///< on systems that capture sound with the screen
        unreachable,     ///< the audio server does not respond
        noOutput,        ///< the audio server has no audio output
        connectionLost,  ///< the connection to the audio server ended
        refused,         ///< the audio server ended the capture or did not start it
        cancelled,       ///< stopped before the start had finished
        alreadyRunning,  ///< started while running or starting
    };

    /// The text for the user, where the platform has no better one.
    [[nodiscard]] static std::string description(Error error);

    struct Failure {
        Error error;
        std::string description;  ///< text for the user

        explicit Failure(Error what) : Failure(what, SystemAudioCapture::description(what)) {}
        Failure(Error what, std::string text) : error(what), description(std::move(text)) {}
    };

    using SampleHandler = std::function<void(const CapturedAudio&)>;
    using StartCompletion = std::function<void(std::optional<Failure>)>;

    static constexpr int sampleRate = 16'000;

    virtual ~SystemAudioCapture() = default;

    /// Starts the capture and waits up to ten seconds for a usable audio server. `handler` is called on
    /// `queue` with all captured audio, in order, and with half a second of zeros every half second while
    /// nothing plays. `completion` is called exactly once: without a value when the capture runs, else with
    /// the error. While a capture runs or is starting, another start fails and changes nothing.
    virtual void start(std::shared_ptr<SerialQueue> queue, SampleHandler handler,
                       StartCompletion completion) = 0;

    /// Stops the capture and cancels a start in flight. `completion` is called exactly once, after the last
    /// call of the handler (soon if nothing runs). A start requested in the meantime begins after the stop.
    virtual void stop(std::function<void()> completion) = 0;

    /// Sets the handler for a running capture that ends by itself. It is called once per such end; the
    /// capture is then stopped and can be started again.
    virtual void onStop(std::function<void(std::optional<Failure>)> handler) = 0;

    /// Sets the handler for the removal of an obstacle to a start while idle, for example when an audio
    /// server comes up.
    virtual void onReady(std::function<void()> handler) = 0;
};

}  // namespace sordin
