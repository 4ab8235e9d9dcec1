// SPDX-License-Identifier: MIT
#pragma once

#include "support/serial_queue.h"

#include <memory>

namespace sordin {

/// A SerialQueue without a thread, for replays and tests: work runs when told to, time passes when told to,
/// both on the caller's thread. Not thread-safe.
class ManualSerialQueue final : public SerialQueue {
public:
    explicit ManualSerialQueue(std::string label);
    ~ManualSerialQueue() override;  ///< drops what is waiting
    ManualSerialQueue(const ManualSerialQueue&) = delete;
    ManualSerialQueue& operator=(const ManualSerialQueue&) = delete;

    [[nodiscard]] const std::string& label() const noexcept override;
    void post(Work work) override;
    /// Runs everything posted so far, then `work`.
    void sync(const Work& work) override;
    Timer after(Duration delay, Work work) override;
    Timer every(Duration interval, Work work) override;
    [[nodiscard]] bool isCurrent() const noexcept override;

    /// Runs posted work, and what it posts in turn, until nothing is waiting.
    void runPending();

    /// Time that has passed since construction.
    [[nodiscard]] Duration now() const;

    /// Lets `duration` pass: runs posted work and, at their times and in their order, the timers that fall
    /// due.
    void advance(Duration duration);

private:
    struct State;
    std::shared_ptr<State> state_;  // weakly known to the timers, which may outlive the queue
};

}  // namespace sordin
