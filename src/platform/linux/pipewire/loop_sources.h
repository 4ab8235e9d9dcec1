// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <functional>
#include <pipewire/pipewire.h>

namespace sordin::pipewire {

/// Runs an action on the loop soon after a signal; several signals until then cause one run.
class LoopEvent {
public:
    /// Throws std::runtime_error if the loop accepts no more sources.
    LoopEvent(pw_loop* loop, std::function<void()> action);
    ~LoopEvent();
    LoopEvent(const LoopEvent&) = delete;
    LoopEvent& operator=(const LoopEvent&) = delete;

    /// Any thread, without a lock; real-time safe.
    void signal();

private:
    pw_loop* loop_;
    std::function<void()> action_;
    spa_source* source_;
};

/// Runs an action on the loop once after each runAfter().
class LoopTimer {
public:
    /// Throws std::runtime_error if the loop accepts no more sources.
    LoopTimer(pw_loop* loop, std::function<void()> action);
    ~LoopTimer();
    LoopTimer(const LoopTimer&) = delete;
    LoopTimer& operator=(const LoopTimer&) = delete;

    /// Replaces a pending run. Call it under the loop's lock.
    void runAfter(std::chrono::nanoseconds delay);

private:
    pw_loop* loop_;
    std::function<void()> action_;
    spa_source* source_;
};

}  // namespace sordin::pipewire
