// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>

namespace sordin {

/// Where the program reads the time. Only differences between two readings of one clock have a meaning.
/// Every implementation may be read from any thread.
class Clock {
public:
    virtual ~Clock() = default;

    /// Seconds since a fixed moment, never smaller than an earlier reading.
    [[nodiscard]] virtual double now() const = 0;
};

/// A clock that stands still until it is moved: replays set it to the sample position, tests to what they
/// need.
class ManualClock final : public Clock {
public:
    explicit ManualClock(double start) : now_(start) {}

    [[nodiscard]] double now() const override { return now_.load(std::memory_order_relaxed); }

    /// Moves the clock to `seconds`, which the caller keeps from going back.
    void set(double seconds) { now_.store(seconds, std::memory_order_relaxed); }

    void advance(double seconds) { set(now() + seconds); }

private:
    std::atomic<double> now_;
};

}  // namespace sordin
