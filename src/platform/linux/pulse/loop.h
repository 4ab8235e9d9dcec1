// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/pulse/handles.h"
#include "support/file_descriptor.h"

#include <chrono>
#include <functional>
#include <pulse/mainloop-api.h>

namespace sordin::pulse {

/// The client library's loop and its thread.
class Loop {
public:
    /// Throws std::runtime_error if the loop cannot be created.
    Loop();
    ~Loop();
    Loop(const Loop&) = delete;
    Loop& operator=(const Loop&) = delete;

    /// Starts the thread. Throws std::runtime_error on failure.
    void start();
    /// Ends the thread; nothing runs on the loop after that.
    void stop();

    [[nodiscard]] LoopLock lock() const { return LoopLock(loop_.get()); }
    [[nodiscard]] pa_mainloop_api* api() const { return pa_threaded_mainloop_get_api(loop_.get()); }
    /// A context that never connects. The library offers monotonic timers only through a context.
    [[nodiscard]] pa_context* timers() const { return timers_.get(); }

    /// Wakes waitFor(). Call it under the lock.
    void signal() { pa_threaded_mainloop_signal(loop_.get(), 0); }

    /// Takes the lock and waits for `condition`; returns its value, also after `deadline`. Do not call it on
    /// the loop's thread.
    bool waitFor(std::chrono::milliseconds deadline, const std::function<bool()>& condition);

private:
    LoopPointer loop_;
    ContextPointer timers_;
};

/// Runs an action on the loop soon after a signal; several signals until then cause one run. Create and
/// destroy it under the lock, or while the loop does not run.
class LoopEvent {
public:
    /// Throws std::runtime_error if no file descriptor is left.
    LoopEvent(const Loop& loop, std::function<void()> action);
    ~LoopEvent();
    LoopEvent(const LoopEvent&) = delete;
    LoopEvent& operator=(const LoopEvent&) = delete;

    /// Any thread, without a lock.
    void signal();

private:
    const Loop& loop_;
    std::function<void()> action_;
    FileDescriptor descriptor_;
    pa_io_event* source_ = nullptr;
};

/// Runs an action on the loop once after each runAfter(). Create and destroy it under the lock, or while the
/// loop does not run.
class LoopTimer {
public:
    LoopTimer(const Loop& loop, std::function<void()> action);
    ~LoopTimer();
    LoopTimer(const LoopTimer&) = delete;
    LoopTimer& operator=(const LoopTimer&) = delete;

    /// Replaces a pending run. Call it under the lock.
    void runAfter(std::chrono::microseconds delay);
    /// Call it under the lock.
    void cancel();

private:
    const Loop& loop_;
    std::function<void()> action_;
    pa_time_event* source_ = nullptr;
};

}  // namespace sordin::pulse
