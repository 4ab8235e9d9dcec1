// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/pulse/connection.h"
#include "platform/linux/pulse/loop.h"
#include "platform/linux/server/server_observer.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <vector>

namespace sordin::pulse {

/// The program's access to PulseAudio: a thread with its loop, and one connection while a server responds. If
/// PipeWire's replacement responds, the session keeps the connection without using it. Its loss is the only
/// sign that PulseAudio may take over, and each new connection would cost all clients of the server time.
///
/// The session connects when it is created. While keepLooking() is set, it tries again half a second after
/// the last attempt until a server responds. After look(), or after the loss of an identified server, it
/// tries again at the earliest three seconds after the last attempt.
///
/// Observers are called on the loop's thread, under its lock. All functions may be called from any other
/// thread.
class Session {
public:
    static constexpr auto serverName = "PulseAudio";

    using Observer = ServerObserver;

    /// Throws std::runtime_error if the loop or its thread cannot be created.
    Session();
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    /// An added observer is called soon. Removing one waits until it is not being called.
    void add(Observer& observer);
    void remove(Observer& observer);

    /// Required for everything below except keepLooking(). look() and the functions that wait must be called
    /// without it.
    [[nodiscard]] LoopLock lock() const { return loop_.lock(); }

    [[nodiscard]] Loop& loop() { return loop_; }

    /// Whether a PulseAudio server is connected.
    [[nodiscard]] bool connected() const { return connection_ && connection_->isPulseAudio() == true; }
    /// Whether it has also listed all its objects.
    [[nodiscard]] bool ready() const { return connected() && connection_->listed(); }
    [[nodiscard]] bool hasSink() const { return connected() && !catalogue().sinks.empty(); }

    /// Only while connected.
    [[nodiscard]] Connection& connection() const { return *connection_; }
    [[nodiscard]] const Catalogue& catalogue() const { return connection_->catalogue(); }

    [[nodiscard]] std::vector<ApplicationStream> applicationStreams() const {
        return connected() ? catalogue().applicationStreams() : std::vector<ApplicationStream>();
    }

    /// Sets what to exclude from listening, effective from the next graphChanged(), which follows soon. See
    /// ApplicationStreams.
    void leaveOut(LeftOut what);

    /// Schedules a call of graphChanged() after `delay` at the latest.
    void refreshAfter(std::chrono::milliseconds delay);

    /// Sets whether to look for a server continuously. Any thread, with any locks held.
    void keepLooking(bool looking);

    /// Looks for a server soon if none is connected. Returns at once.
    void look();

    /// Whether the latest connection may still turn out to be PulseAudio: it began within the last one and a
    /// half seconds, and the server has not identified itself.
    [[nodiscard]] bool undecided() const;

    /// Waits until it is known whether a server is connected and ready; returns whether it is. Returns false
    /// after `deadline`.
    bool waitUntilKnown(std::chrono::milliseconds deadline);

    /// Waits until the server has processed all requests so far. Returns false if there is no server or after
    /// `deadline`.
    bool flush(std::chrono::milliseconds deadline);

private:
    using Clock = std::chrono::steady_clock;

    void connect();
    void disconnect();
    void onLook();
    void onRefresh();

    Loop loop_;
    LoopEvent refresh_;
    LoopEvent look_;
    LoopTimer refreshTimer_;
    LoopTimer connectTimer_;
    LoopTimer decideTimer_;  // fires when undecided() ends
    std::atomic<bool> looking_ = false;
    std::vector<Observer*> observers_;
    LeftOut leftOut_;

    std::unique_ptr<Connection> connection_;
    bool over_ = false;              // the connection will be closed after its current event
    bool asked_ = false;             // to try one more connection
    Clock::time_point attempted_;    // when the last connection was begun or lost
    std::uint64_t connections_ = 0;  // the number of attempts so far
    std::uint64_t questions_ = 0;    // synchronise() requests
    std::uint64_t answers_ = 0;
    std::optional<Clock::time_point> refreshAt_;
};

}  // namespace sordin::pulse
