// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/pipewire/session.h"
#include "platform/linux/pulse/session.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>

namespace sordin {

/// Chooses the audio server that plays the sound. PulseAudio itself takes precedence, because desktops with
/// PulseAudio may run PipeWire for screen sharing only. Otherwise it is PipeWire once that has a sink. If the
/// chosen server goes away, it stays the choice until the other one is available.
///
/// Create this object before other observers of the sessions, so that it is called before them. All
/// operations may be called from any thread and return at once, except waitUntilKnown().
class ServerChoice {
public:
    enum class Server { pipeWire, pulseAudio };

    /// Neither argument may be null.
    ServerChoice(std::shared_ptr<pipewire::Session> pipeWire, std::shared_ptr<pulse::Session> pulse);
    ~ServerChoice();
    ServerChoice(const ServerChoice&) = delete;
    ServerChoice& operator=(const ServerChoice&) = delete;

    [[nodiscard]] Server server() const { return server_; }

    /// Sets the handler for possible changes of server() or undecided(). It is called on any thread with
    /// locks of the sessions held: it must only post. An empty handler removes the current one, which is not
    /// called any more after the return.
    void onChange(std::function<void()> handler);

    /// Checks soon whether PulseAudio now plays the sound.
    void look() { pulse_->look(); }

    /// Whether PulseAudio may still turn out to be available; true for one and a half seconds at most.
    [[nodiscard]] bool undecided() const;

    /// Waits until the server that plays the sound is known and has listed its objects. Returns false after
    /// `deadline`.
    bool waitUntilKnown(std::chrono::milliseconds deadline);

private:
    template <class Session>
    class Watch;

    void decide();
    void tell();

    const std::shared_ptr<pipewire::Session> pipeWire_;
    const std::shared_ptr<pulse::Session> pulse_;
    std::mutex deciding_;
    std::mutex telling_;
    std::function<void()> onChange_;       // guarded by telling_
    std::atomic<bool> undecided_ = false;  // at the last call of the handler
    std::atomic<Server> server_ = Server::pipeWire;
    std::atomic<bool> pipeWireSounds_ = false;
    std::atomic<bool> pulseIsThere_ = false;
    std::unique_ptr<Watch<pipewire::Session>> pipeWireWatch_;
    std::unique_ptr<Watch<pulse::Session>> pulseWatch_;
};

}  // namespace sordin
