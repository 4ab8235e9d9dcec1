// SPDX-License-Identifier: MIT
#include "app/qt_main_queue.h"

#include "support/fatal.h"

#include <QPointer>
#include <QThread>
#include <QTimer>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <mutex>
#include <utility>

namespace sordin {

/// The owner of posted work and timers, for timers that may outlive the queue.
struct QtMainQueue::Anchor {
    std::mutex lock;
    QObject* object;  // null after the queue is destroyed
};

/// A Qt timer lives on the main thread and belongs to the queue's object. Other threads mark it as cancelled
/// and post its end.
struct QtMainQueue::Ticker {
    using Clock = std::chrono::steady_clock;

    Clock::time_point due;
    const std::optional<Duration> interval;
    std::atomic<bool> cancelled = false;
    // Main thread only:
    std::shared_ptr<const Work> work;
    QPointer<QTimer> timer;

    Ticker(Duration delay, std::optional<Duration> every, Work action)
        : due(Clock::now() + delay), interval(every), work(std::make_shared<const Work>(std::move(action))) {}

    void arm() const {
        using std::chrono::milliseconds;
        timer->start(std::max(std::chrono::ceil<milliseconds>(due - Clock::now()), milliseconds(0)));
    }

    void fire() {
        const auto now = Clock::now();
        if (cancelled) {
            end();
        } else if (now < due) {
            arm();  // Qt's timers have a resolution of 1 ms
        } else {
            const auto running = work;  // a copy, because the call may end the timer
            if (interval) {
                due += *interval * (1 + (now - due) / *interval);
                arm();
            } else {
                end();
            }
            (*running)();
        }
    }

    /// Releases the work at once, because the event loop that would delete the timer may have ended.
    void end() {
        if (timer) {
            timer->stop();
            timer->deleteLater();  // not deleted here, because it may be running
        }
        const auto gone = std::move(work);
    }
};

QtMainQueue::QtMainQueue() : context_(std::make_unique<QObject>()), anchor_(std::make_shared<Anchor>()) {
    anchor_->object = context_.get();
}

QtMainQueue::~QtMainQueue() {
    const std::scoped_lock lock(anchor_->lock);
    anchor_->object = nullptr;
}

bool QtMainQueue::isCurrent() const noexcept {
    return QThread::currentThread() == context_->thread();
}

void QtMainQueue::post(Work work) {
    QMetaObject::invokeMethod(context_.get(), std::move(work), Qt::QueuedConnection);
}

void QtMainQueue::sync(const Work& work) {
    QMetaObject::invokeMethod(context_.get(), work,
                              isCurrent() ? Qt::DirectConnection : Qt::BlockingQueuedConnection);
}

Timer QtMainQueue::after(Duration delay, Work work) {
    return start(delay, std::nullopt, std::move(work));
}

Timer QtMainQueue::every(Duration interval, Work work) {
    if (interval <= Duration::zero()) {
        fatal("a repeating timer needs an interval above 0");
    }
    return start(interval, interval, std::move(work));
}

Timer QtMainQueue::start(Duration delay, std::optional<Duration> interval, Work work) {
    const auto ticker = std::make_shared<Ticker>(delay, interval, std::move(work));
    const auto begin = [context = context_.get(), ticker] {
        if (ticker->cancelled) {
            return;
        }
        // NOLINTNEXTLINE(cppcoreguidelines-owning-memory): the context owns it
        ticker->timer = new QTimer(context);
        // Other timer types may fire early.
        ticker->timer->setTimerType(Qt::PreciseTimer);
        ticker->timer->setSingleShot(true);
        QObject::connect(ticker->timer, &QTimer::timeout, context, [ticker] { ticker->fire(); });
        ticker->arm();
    };
    if (isCurrent()) {
        begin();
    } else {
        post(begin);
    }
    // Held weakly, so that the work is destroyed with the queue.
    return Timer([weak = std::weak_ptr(ticker), anchor = anchor_, main = context_->thread()] {
        const auto live = weak.lock();
        if (!live) {
            return;
        }
        live->cancelled = true;
        if (QThread::currentThread() == main) {
            live->end();
            return;
        }
        const std::scoped_lock lock(anchor->lock);
        if (anchor->object != nullptr) {
            QMetaObject::invokeMethod(
                anchor->object, [live] { live->end(); }, Qt::QueuedConnection);
        }
    });
}

}  // namespace sordin
