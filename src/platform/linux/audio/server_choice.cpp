// SPDX-License-Identifier: MIT
#include "platform/linux/audio/server_choice.h"

#include <type_traits>
#include <utility>

namespace sordin {

/// Tracks whether a session can play the sound. Called on its loop, under its lock.
template <class Session>
class ServerChoice::Watch : private Session::Observer {
public:
    Watch(ServerChoice& choice, Session& session, std::atomic<bool>& there, bool (*isThere)(const Session&))
        : choice_(choice), session_(session), there_(there), isThere_(isThere) {
        session_.add(*this);
    }
    ~Watch() override { session_.remove(*this); }
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

private:
    void disconnecting() override { update(false); }
    void graphChanged() override {
        update(isThere_(session_));
        if constexpr (std::is_same_v<Session, pulse::Session>) {
            const bool undecided = session_.undecided();
            if (choice_.undecided_.exchange(undecided) != undecided) {
                choice_.tell();
            }
        }
    }
    void update(bool there) {
        if (there_.exchange(there) != there) {
            choice_.decide();
        }
    }

    ServerChoice& choice_;
    Session& session_;
    std::atomic<bool>& there_;
    bool (*const isThere_)(const Session&);
};

ServerChoice::ServerChoice(std::shared_ptr<pipewire::Session> pipeWire, std::shared_ptr<pulse::Session> pulse)
    : pipeWire_(std::move(pipeWire)), pulse_(std::move(pulse)) {
    pulse_->keepLooking(true);
    pipeWireWatch_ = std::make_unique<Watch<pipewire::Session>>(
        *this, *pipeWire_, pipeWireSounds_,
        [](const pipewire::Session& session) { return session.ready() && session.hasSink(); });
    pulseWatch_ = std::make_unique<Watch<pulse::Session>>(
        *this, *pulse_, pulseIsThere_, [](const pulse::Session& session) { return session.connected(); });
}

ServerChoice::~ServerChoice() = default;

void ServerChoice::onChange(std::function<void()> handler) {
    const std::scoped_lock lock(telling_);
    onChange_ = std::move(handler);
}

void ServerChoice::tell() {
    const std::scoped_lock lock(telling_);
    if (onChange_) {
        onChange_();
    }
}

bool ServerChoice::undecided() const {
    const auto lock = pulse_->lock();
    return pulse_->undecided();
}

bool ServerChoice::waitUntilKnown(std::chrono::milliseconds deadline) {
    const auto end = std::chrono::steady_clock::now() + deadline;
    if (pulse_->waitUntilKnown(deadline)) {
        return true;
    }
    return pipeWire_->waitUntilListed(
        std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now()));
}

void ServerChoice::decide() {
    Server before = server_;
    {
        // Both servers may call this at the same time; the last call sees both states.
        const std::scoped_lock lock(deciding_);
        before = server_;
        if (pulseIsThere_) {
            server_ = Server::pulseAudio;
        } else if (pipeWireSounds_) {
            server_ = Server::pipeWire;
        }
        pulse_->keepLooking(!pipeWireSounds_);
    }
    if (server_ != before) {
        tell();
    }
}

}  // namespace sordin
