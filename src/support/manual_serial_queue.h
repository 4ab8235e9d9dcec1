// SPDX-License-Identifier: MIT
#pragma once

#include "support/serial_queue.h"

#include <memory>

namespace sordin {

/// A SerialQueue without a thread, for replays and tests: the caller runs the work and advances the time, and
/// all work runs on the caller's thread. Not thread-safe.
class ManualSerialQueue final : public SerialQueue {
public:
    explicit ManualSerialQueue(std::string label);
    ~ManualSerialQueue() override;  ///< drops pending work
    ManualSerialQueue(const ManualSerialQueue&) = delete;
    ManualSerialQueue& operator=(const ManualSerialQueue&) = delete;

    [[nodiscard]] const std::string& label() const noexcept override;
    void post(Work work) override;
    /// Runs the work posted so far, then `work`; on the queue itself only `work`.
    void sync(const Work& work) override;
    Timer after(Duration delay, Work work) override;
    Timer every(Duration interval, Work work) override;
    [[nodiscard]] bool isCurrent() const noexcept override;

    /// Runs posted work, including work that it posts, until none is pending.
    void runPending();

    /// Time since construction, as advance() has moved it.
    [[nodiscard]] Duration now() const;

    /// Advances the time by `duration`: runs posted work, and the timers that fall due, in order and each at
    /// its time.
    void advance(Duration duration);

private:
    struct State;
    std::shared_ptr<State> state_;  // timers hold it weakly, because they may outlive the queue
};

}  // namespace sordin
