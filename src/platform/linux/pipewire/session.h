// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/pipewire/connection.h"
#include "platform/linux/pipewire/handles.h"
#include "platform/linux/pipewire/loop_sources.h"
#include "platform/linux/server/server_observer.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace sordin::pipewire {

/// What the program has of PipeWire: one thread with its loop, and one connection for all but the capture,
/// made again half a second after it was lost and every half second until a server answers.
///
/// Observers are called on the loop's thread, under its lock; everything else may be called from any other
/// thread.
class Session {
public:
    static constexpr auto serverName = "PipeWire";

    using Observer = ServerObserver;

    /// Throws std::runtime_error.
    Session();
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    /// Adds an observer, which is called soon; removing it waits until it is not being called.
    void add(Observer& observer);
    void remove(Observer& observer);

    /// Everything below needs this, but for the waits, which must not be called with it.
    [[nodiscard]] LoopLock lock() const { return LoopLock(loop_.get()); }

    [[nodiscard]] pw_loop* loop() const { return pw_thread_loop_get_loop(loop_.get()); }

    /// For connections of their own; none where PipeWire is not installed.
    [[nodiscard]] pw_context* context() const { return context_.get(); }

    /// None while there is no server.
    [[nodiscard]] Connection* connection() const { return connection_.get(); }

    [[nodiscard]] bool connected() const { return connection_ != nullptr; }

    /// Whether the server has named all it had when the connection was made.
    [[nodiscard]] bool ready() const { return connected() && listed_; }

    [[nodiscard]] bool hasSink() const { return connected() && connection_->graph().hasSink(); }

    [[nodiscard]] std::vector<ApplicationStream> applicationStreams() const {
        return connected() ? connection_->graph().applicationStreams() : std::vector<ApplicationStream>();
    }

    /// Leaves out these from the next graphChanged() on, which comes soon. See ApplicationStreams.
    void leaveOut(LeftOut what);

    /// Whether the session manager had named a default sink by then, so that it had long been running.
    [[nodiscard]] bool settledWhenListed() const { return settledWhenListed_; }

    /// Has graphChanged() called after `delay`, or sooner.
    void refreshAfter(std::chrono::milliseconds delay);

    /// Waits until ready(); false if that takes longer than `deadline`.
    bool waitUntilListed(std::chrono::milliseconds deadline);

    /// Waits until the server has done everything asked so far; false if there is none or it takes longer
    /// than `deadline`.
    bool flush(std::chrono::milliseconds deadline);

    /// The sandboxed application that a process belongs to, as the server knows it. Takes the lock.
    [[nodiscard]] std::optional<std::string> portalApplication(std::int32_t processId) const;

private:
    void connect();
    void disconnect();
    void onLost();
    void onSynchronised(int sequence);
    void onRefresh();
    /// Waits with the lock until `condition` or for `deadline`.
    template <class Condition>
    bool waitFor(std::chrono::milliseconds deadline, Condition condition);

    LoopPointer loop_;
    ContextPointer context_;
    std::unique_ptr<LoopEvent> refresh_;
    std::unique_ptr<LoopTimer> refreshTimer_;  // the same, later
    std::unique_ptr<LoopTimer> connectTimer_;
    std::vector<Observer*> observers_;
    LeftOut leftOut_;

    std::unique_ptr<Connection> connection_;
    bool lost_ = false;  // the connection is to be closed once its events are done
    bool listed_ = false;
    bool settledWhenListed_ = false;
    int listingRounds_ = 0;
    int listingSequence_ = 0;
    int done_ = 0;                   // the last number that the server answered to
    std::uint64_t connections_ = 0;  // how many there have been
    std::optional<std::chrono::steady_clock::time_point> refreshAt_;
};

}  // namespace sordin::pipewire
