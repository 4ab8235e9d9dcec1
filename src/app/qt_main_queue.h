// SPDX-License-Identifier: MIT
#pragma once

#include "support/serial_queue.h"

#include <QObject>
#include <memory>
#include <optional>
#include <string>

namespace sordin {

/// The main thread as a SerialQueue: Qt's event loop runs the work. Create and destroy it on the main thread;
/// pending work is dropped.
class QtMainQueue final : public SerialQueue {
public:
    QtMainQueue();
    ~QtMainQueue() override;
    QtMainQueue(const QtMainQueue&) = delete;
    QtMainQueue& operator=(const QtMainQueue&) = delete;

    [[nodiscard]] const std::string& label() const noexcept override { return label_; }
    void post(Work work) override;
    void sync(const Work& work) override;
    Timer after(Duration delay, Work work) override;
    Timer every(Duration interval, Work work) override;
    [[nodiscard]] bool isCurrent() const noexcept override;

private:
    struct Anchor;
    struct Ticker;
    Timer start(Duration delay, std::optional<Duration> interval, Work work);

    const std::string label_ = "main";
    std::unique_ptr<QObject> context_;  // owns pending work
    const std::shared_ptr<Anchor> anchor_;
};

}  // namespace sordin
