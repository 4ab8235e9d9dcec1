// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <functional>
#include <pipewire/pipewire.h>

namespace sordin::pipewire {

/// Runs an action on the loop soon after it was signalled, once for all signals until then.
class LoopEvent {
public:
    /// Throws std::runtime_error.
    LoopEvent(pw_loop* loop, std::function<void()> action);
    ~LoopEvent();
    LoopEvent(const LoopEvent&) = delete;
    LoopEvent& operator=(const LoopEvent&) = delete;

    /// Any thread, without a lock, also a real-time one.
    void signal();

private:
    pw_loop* loop_;
    std::function<void()> action_;
    spa_source* source_;
};

/// Runs an action on the loop, once for each time it was set.
class LoopTimer {
public:
    /// Throws std::runtime_error.
    LoopTimer(pw_loop* loop, std::function<void()> action);
    ~LoopTimer();
    LoopTimer(const LoopTimer&) = delete;
    LoopTimer& operator=(const LoopTimer&) = delete;

    /// Replaces what was set before. Under the loop's lock.
    void runAfter(std::chrono::nanoseconds delay);

private:
    pw_loop* loop_;
    std::function<void()> action_;
    spa_source* source_;
};

}  // namespace sordin::pipewire
