// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <utility>

namespace sordin {

/// A running timer of a SerialQueue. Move-only; dropping it cancels it. It may outlive its queue.
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

    /// No run begins after this returns. Called on the queue's own thread nothing of the work is running
    /// either (but for the very run that calls); called on another thread, a run that had begun may still be
    /// finishing.
    void cancel() {
        if (const auto cancel = std::exchange(cancel_, nullptr)) {
            cancel();
        }
    }

private:
    std::function<void()> cancel_;
};

/// Runs work one piece at a time, in the order in which it was posted.
///
/// Ending: destruction ends the queue. Destroyed on another thread, it first runs all the work posted so far;
/// destroyed by a piece of its own work, it drops what is still waiting. Work posted after the end began is
/// dropped, timers stop firing when it begins, and nothing runs once the destructor has returned (except for
/// the rest of the piece of work that destroyed it).
///
/// Work must not throw: an exception that leaves it ends the process.
class SerialQueue {
public:
    using Work = std::function<void()>;
    using Duration = std::chrono::nanoseconds;

    virtual ~SerialQueue() = default;

    /// Lower-case and dotted, for example "sordin.audio". Also the thread's name, as far as the system's
    /// limit (15 characters on Linux) allows.
    [[nodiscard]] virtual const std::string& label() const noexcept = 0;

    /// Adds `work` behind everything posted so far; returns at once. Any thread.
    virtual void post(Work work) = 0;

    /// Runs `work` behind everything posted so far and returns when it is done. On the queue itself it runs
    /// at once. Any thread.
    virtual void sync(const Work& work) = 0;

    /// Runs `work` once, no sooner than `delay` from now. Any thread.
    virtual Timer after(Duration delay, Work work) = 0;

    /// Runs `work` every `interval` (more than 0), first one interval from now. The times are multiples of
    /// the interval; those missed while the queue was busy are left out. Any thread.
    virtual Timer every(Duration interval, Work work) = 0;

    /// Whether the caller is running as a piece of this queue's work.
    [[nodiscard]] virtual bool isCurrent() const noexcept = 0;
};

}  // namespace sordin
