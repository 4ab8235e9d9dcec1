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

/// What the program has of PulseAudio: one thread with its loop, and one connection while a server answers.
/// Where PipeWire answers in its place the connection is kept and not used: its loss is the only sign that
/// PulseAudio may take over, and each new connection would make work for all clients of the server.
///
/// Connects when it begins; while it keeps looking, half a second after the last attempt until a server
/// answers; when it is asked, or has lost a server that it knew, no sooner than three seconds after the last
/// attempt.
///
/// Observers are called on the loop's thread, under its lock; everything else may be called from any other
/// thread.
class Session {
public:
    static constexpr auto serverName = "PulseAudio";

    using Observer = ServerObserver;

    /// Throws std::runtime_error.
    Session();
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    /// Adds an observer, which is called soon; removing it waits until it is not being called.
    void add(Observer& observer);
    void remove(Observer& observer);

    /// Everything below needs this, but for keepLooking() and the waits. These must not be called with it.
    [[nodiscard]] LoopLock lock() const { return loop_.lock(); }

    [[nodiscard]] Loop& loop() { return loop_; }

    /// Whether a PulseAudio is there.
    [[nodiscard]] bool connected() const { return connection_ && connection_->isPulseAudio() == true; }
    /// Whether it has named all it has, too.
    [[nodiscard]] bool ready() const { return connected() && connection_->listed(); }
    [[nodiscard]] bool hasSink() const { return connected() && !catalogue().sinks.empty(); }

    /// While connected.
    [[nodiscard]] Connection& connection() const { return *connection_; }
    [[nodiscard]] const Catalogue& catalogue() const { return connection_->catalogue(); }

    [[nodiscard]] std::vector<ApplicationStream> applicationStreams() const {
        return connected() ? catalogue().applicationStreams() : std::vector<ApplicationStream>();
    }

    /// Leaves out these from the next graphChanged() on, which comes soon. See ApplicationStreams.
    void leaveOut(LeftOut what);

    /// Has graphChanged() called after `delay`, or sooner.
    void refreshAfter(std::chrono::milliseconds delay);

    /// Whether to look for a server all the time. Any thread, with any locks.
    void keepLooking(bool looking);

    /// Has a server looked for soon, if there is none. Does not wait.
    void look();

    /// Whether a server may yet turn out to be PulseAudio: a connection has been begun, within the last one
    /// and a half seconds, and has not answered.
    [[nodiscard]] bool undecided() const;

    /// Waits until it is known whether there is a server that is ready; false also if that takes longer than
    /// `deadline`.
    bool waitUntilKnown(std::chrono::milliseconds deadline);

    /// Waits until the server has done everything asked so far; false if there is none or it takes longer
    /// than `deadline`.
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
    LoopTimer decideTimer_;  // until the connection counts as one that does not answer
    std::atomic<bool> looking_ = false;
    std::vector<Observer*> observers_;
    LeftOut leftOut_;

    std::unique_ptr<Connection> connection_;
    bool over_ = false;              // the connection is to be closed once its events are done
    bool asked_ = false;             // to look once more
    Clock::time_point attempted_;    // when a connection was begun or lost last
    std::uint64_t connections_ = 0;  // how many there have been, with those that came to nothing
    std::uint64_t questions_ = 0;    // to the server, for it to catch up
    std::uint64_t answers_ = 0;
    std::optional<Clock::time_point> refreshAt_;
};

}  // namespace sordin::pulse
