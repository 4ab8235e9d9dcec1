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

/// Which audio server plays the sound. Where PulseAudio itself answers it is that one, since desktops of this
/// kind may run PipeWire too, for sharing screens; else it is PipeWire once that has a device. A server that
/// goes stays the choice until the other one is there.
///
/// Whoever observes the sessions should begin to after the choice was made: then it is told before them. All
/// operations may be called from any thread, and return at once unless they say that they wait.
class ServerChoice {
public:
    enum class Server { pipeWire, pulseAudio };

    /// None may be null.
    ServerChoice(std::shared_ptr<pipewire::Session> pipeWire, std::shared_ptr<pulse::Session> pulse);
    ~ServerChoice();
    ServerChoice(const ServerChoice&) = delete;
    ServerChoice& operator=(const ServerChoice&) = delete;

    [[nodiscard]] Server server() const { return server_; }

    /// Sets what is called, on any thread with locks of the sessions held, after server() or undecided() may
    /// answer something else. It must only post. Empty for nothing; then it is not being called any more.
    void onChange(std::function<void()> handler);

    /// Has looked soon whether PulseAudio has come to be the one that plays.
    void look() { pulse_->look(); }

    /// Whether PulseAudio may yet turn out to be there; for one and a half seconds at most.
    [[nodiscard]] bool undecided() const;

    /// Waits until the server that plays is known with all it has; false if that takes longer than
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
    std::atomic<bool> undecided_ = false;  // as told last
    std::atomic<Server> server_ = Server::pipeWire;
    std::atomic<bool> pipeWireSounds_ = false;
    std::atomic<bool> pulseIsThere_ = false;
    std::unique_ptr<Watch<pipewire::Session>> pipeWireWatch_;
    std::unique_ptr<Watch<pulse::Session>> pulseWatch_;
};

}  // namespace sordin
