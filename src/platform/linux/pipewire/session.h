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

/// The program's access to PipeWire: a thread with its loop, and one connection for everything except the
/// capture. The session reconnects half a second after the connection is lost, and every half second until a
/// server responds.
///
/// Observers are called on the loop's thread, under its lock. All functions may be called from any other
/// thread.
class Session {
public:
    static constexpr auto serverName = "PipeWire";

    using Observer = ServerObserver;

    /// Throws std::runtime_error if the loop or its thread cannot be created.
    Session();
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    /// An added observer is called soon. Removing one waits until it is not being called.
    void add(Observer& observer);
    void remove(Observer& observer);

    /// Required for everything below, except for functions that wait or take the lock themselves; these must
    /// be called without it.
    [[nodiscard]] LoopLock lock() const { return LoopLock(loop_.get()); }

    [[nodiscard]] pw_loop* loop() const { return pw_thread_loop_get_loop(loop_.get()); }

    /// For additional connections; null if PipeWire is not installed.
    [[nodiscard]] pw_context* context() const { return context_.get(); }

    /// Null while there is no server.
    [[nodiscard]] Connection* connection() const { return connection_.get(); }

    [[nodiscard]] bool connected() const { return connection_ != nullptr; }

    /// Whether the server has listed all objects that existed when the connection was made.
    [[nodiscard]] bool ready() const { return connected() && listed_; }

    [[nodiscard]] bool hasSink() const { return connected() && connection_->graph().hasSink(); }

    [[nodiscard]] std::vector<ApplicationStream> applicationStreams() const {
        return connected() ? connection_->graph().applicationStreams() : std::vector<ApplicationStream>();
    }

    /// Sets what to exclude from listening, effective from the next graphChanged(), which follows soon. See
    /// ApplicationStreams.
    void leaveOut(LeftOut what);

    /// Whether a default sink was known when the objects were listed, which means that the session manager
    /// was not just starting.
    [[nodiscard]] bool settledWhenListed() const { return settledWhenListed_; }

    /// Schedules a call of graphChanged() after `delay` at the latest.
    void refreshAfter(std::chrono::milliseconds delay);

    /// Waits until ready(); returns false after `deadline`.
    bool waitUntilListed(std::chrono::milliseconds deadline);

    /// Waits until the server has processed all requests so far. Returns false if there is no server or after
    /// `deadline`.
    bool flush(std::chrono::milliseconds deadline);

    /// Returns the sandboxed application of a process, as the server knows it. Takes the lock.
    [[nodiscard]] std::optional<std::string> portalApplication(std::int32_t processId) const;

private:
    void connect();
    void disconnect();
    void onLost();
    void onSynchronised(int sequence);
    void onRefresh();
    /// Takes the lock and waits for `condition`; returns its value after `deadline`.
    template <class Condition>
    bool waitFor(std::chrono::milliseconds deadline, Condition condition);

    LoopPointer loop_;
    ContextPointer context_;
    std::unique_ptr<LoopEvent> refresh_;
    std::unique_ptr<LoopTimer> refreshTimer_;  // for a delayed refresh_
    std::unique_ptr<LoopTimer> connectTimer_;
    std::vector<Observer*> observers_;
    LeftOut leftOut_;

    std::unique_ptr<Connection> connection_;
    bool lost_ = false;  // the connection will be closed after its current event
    bool listed_ = false;
    bool settledWhenListed_ = false;
    int listingRounds_ = 0;
    int listingSequence_ = 0;
    int done_ = 0;                   // the last sequence number that the server replied to
    std::uint64_t connections_ = 0;  // the number of connections so far
    std::optional<std::chrono::steady_clock::time_point> refreshAt_;
};

}  // namespace sordin::pipewire
