// SPDX-License-Identifier: MIT
#pragma once

#include "support/serial_queue.h"

#include <memory>
#include <thread>

namespace sordin {

/// How much a queue's work matters to the person at the computer.
enum class QualityOfService {
    userInteractive,  ///< what is heard or seen at once
    userInitiated,    ///< the program's main work
    utility,          ///< can wait: its thread yields to all others
};

/// The program's SerialQueue: a thread of its own and standalone Asio's event loop.
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
    std::shared_ptr<Loop> loop_;  // shared with the thread, which may outlive the queue by one piece of work
    std::thread thread_;
};

}  // namespace sordin
