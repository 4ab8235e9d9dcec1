// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <utility>

namespace sordin {

/// A running timer of a SerialQueue. Its destruction cancels it. It may outlive its queue. Move-only.
class [[nodiscard]] Timer {
public:
    Timer() = default;
    explicit Timer(std::function<void()> cancel) : cancel_(std::move(cancel)) {}
    Timer(const Timer&) = delete;
    Timer& operator=(const Timer&) = delete;
    Timer(Timer&& other) noexcept : cancel_(std::exchange(other.cancel_, nullptr)) {}
    Timer& operator=(Timer&& other) noexcept {
        if (this != &other) {
            cancel();
            cancel_ = std::exchange(other.cancel_, nullptr);
        }
        return *this;
    }
    ~Timer() { cancel(); }

    /// Cancels the timer: its work does not start after this returns. On another thread than the queue's,
    /// work that has already started may still be running when this returns.
    void cancel() {
        if (const auto cancel = std::exchange(cancel_, nullptr)) {
            cancel();
        }
    }

private:
    std::function<void()> cancel_;
};

/// Runs work items one at a time, in the order in which they were posted.
///
/// Destroying the queue on another thread first runs all work posted so far. If the queue's own work destroys
/// it, the pending work is dropped. Work posted after the destruction has begun is dropped, and timers no
/// longer fire. When the destructor has returned, nothing runs except the rest of the work item that
/// destroyed the queue.
///
/// Work must not throw: an exception ends the process.
class SerialQueue {
public:
    using Work = std::function<void()>;
    using Duration = std::chrono::nanoseconds;

    virtual ~SerialQueue() = default;

    /// The queue's label, lower case and dotted, for example "sordin.audio". Its thread has the same name,
    /// within the system's limit (15 characters on Linux).
    [[nodiscard]] virtual const std::string& label() const noexcept = 0;

    /// Runs `work` after all work posted so far. Returns immediately. Callable from any thread.
    virtual void post(Work work) = 0;

    /// Runs `work` after all work posted so far and waits for it; on the queue itself, runs it immediately.
    /// If the queue ends before, returns without running it. Callable from any thread.
    virtual void sync(const Work& work) = 0;

    /// Runs `work` once, not before `delay` has passed. Callable from any thread.
    virtual Timer after(Duration delay, Work work) = 0;

    /// Runs `work` every `interval`, for the first time after one interval. Stays in step with multiples of
    /// the interval and skips those that pass while the queue is busy. Ends the process unless `interval` is
    /// above 0. Callable from any thread.
    virtual Timer every(Duration interval, Work work) = 0;

    /// Whether the caller runs within this queue's work.
    [[nodiscard]] virtual bool isCurrent() const noexcept = 0;
};

}  // namespace sordin
