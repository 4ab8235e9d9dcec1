// SPDX-License-Identifier: MIT
#pragma once

#include "support/serial_queue.h"

#include <memory>
#include <thread>

namespace sordin {

/// Priority of a queue's work.
enum class QualityOfService {
    userInteractive,  ///< audible or visible at once
    userInitiated,    ///< the program's main work
    utility,          ///< background work: its thread gets a lower priority
};

/// A SerialQueue with a dedicated thread that runs an event loop of standalone Asio.
class AsioSerialQueue final : public SerialQueue {
public:
    explicit AsioSerialQueue(std::string label, QualityOfService quality = QualityOfService::userInitiated);
    ~AsioSerialQueue() override;
    AsioSerialQueue(const AsioSerialQueue&) = delete;
    AsioSerialQueue& operator=(const AsioSerialQueue&) = delete;

    [[nodiscard]] const std::string& label() const noexcept override;
    void post(Work work) override;
    void sync(const Work& work) override;
    Timer after(Duration delay, Work work) override;
    Timer every(Duration interval, Work work) override;
    [[nodiscard]] bool isCurrent() const noexcept override;

private:
    class Loop;
    // Shared with the thread, which outlives the queue if its own work destroys the queue.
    std::shared_ptr<Loop> loop_;
    std::thread thread_;
};

}  // namespace sordin
