// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>

namespace sordin {

/// The program's source of time. Only the difference between two readings of one clock is meaningful.
/// Implementations must allow readings from any thread.
class Clock {
public:
    virtual ~Clock() = default;

    /// Seconds since a fixed point in time. Never decreases.
    [[nodiscard]] virtual double now() const = 0;
};

/// A clock that moves only when it is set: replays set it to the position in the recording, tests to any
/// time.
class ManualClock final : public Clock {
public:
    explicit ManualClock(double start) : now_(start) {}

    [[nodiscard]] double now() const override { return now_.load(std::memory_order_relaxed); }

    /// Sets the clock. The caller must not set it back.
    void set(double seconds) { now_.store(seconds, std::memory_order_relaxed); }

    void advance(double seconds) { set(now() + seconds); }

private:
    std::atomic<double> now_;
};

}  // namespace sordin
