// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/pulse/handles.h"
#include "support/file_descriptor.h"

#include <chrono>
#include <functional>
#include <pulse/mainloop-api.h>

namespace sordin::pulse {

/// The client library's loop in a thread of its own.
class Loop {
public:
    /// Throws std::runtime_error.
    Loop();
    ~Loop();
    Loop(const Loop&) = delete;
    Loop& operator=(const Loop&) = delete;

    /// Begins the thread. Throws std::runtime_error.
    void start();
    /// Ends the thread; nothing runs on the loop any more.
    void stop();

    [[nodiscard]] LoopLock lock() const { return LoopLock(loop_.get()); }
    [[nodiscard]] pa_mainloop_api* api() const { return pa_threaded_mainloop_get_api(loop_.get()); }
    /// A context that never connects: the library's timers that do not follow the wall clock belong to one.
    [[nodiscard]] pa_context* timers() const { return timers_.get(); }

    /// Under the lock: wakes those in waitFor().
    void signal() { pa_threaded_mainloop_signal(loop_.get(), 0); }

    /// Waits with the lock until `condition` or for `deadline`; the condition's last answer. Never on the
    /// loop's thread.
    bool waitFor(std::chrono::milliseconds deadline, const std::function<bool()>& condition);

private:
    LoopPointer loop_;
    ContextPointer timers_;
};

/// Runs an action on the loop soon after it was signalled, once for all signals until then. Made and ended
/// under the lock, or while the loop does not run.
class LoopEvent {
public:
    /// Throws std::runtime_error.
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

/// Runs an action on the loop, once for each time it was set. Made and ended under the lock, or while the
/// loop does not run.
class LoopTimer {
public:
    LoopTimer(const Loop& loop, std::function<void()> action);
    ~LoopTimer();
    LoopTimer(const LoopTimer&) = delete;
    LoopTimer& operator=(const LoopTimer&) = delete;

    /// Replaces what was set before. Under the lock.
    void runAfter(std::chrono::microseconds delay);
    /// Under the lock.
    void cancel();

private:
    const Loop& loop_;
    std::function<void()> action_;
    pa_time_event* source_ = nullptr;
};

}  // namespace sordin::pulse
