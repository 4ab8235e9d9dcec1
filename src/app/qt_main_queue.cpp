// SPDX-License-Identifier: MIT
#include "app/qt_main_queue.h"

#include <QPointer>
#include <QThread>
#include <QTimer>
#include <atomic>
#include <chrono>
#include <utility>

namespace sordin {

/// A timer of Qt's lives on the main thread, with the queue's object. Other threads only say that it no
/// longer counts.
struct QtMainQueue::Ticker {
    std::atomic<bool> cancelled = false;
    QPointer<QTimer> timer;  // on the main thread only

    void end() const {
        if (timer) {
            timer->stop();
            timer->deleteLater();  // it may be what is running
        }
    }
};

QtMainQueue::QtMainQueue() : context_(std::make_unique<QObject>()) {}

QtMainQueue::~QtMainQueue() = default;

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
    return start(delay, std::move(work), true);
}

Timer QtMainQueue::every(Duration interval, Work work) {
    return start(interval, std::move(work), false);
}

Timer QtMainQueue::start(Duration interval, Work work, bool once) {
    using std::chrono::milliseconds;
    const auto ticker = std::make_shared<Ticker>();
    const auto length = std::chrono::ceil<milliseconds>(interval);
    const auto begin = [context = context_.get(), ticker, length, once, work = std::move(work)] {
        constexpr milliseconds coarseFrom{100};
        // NOLINTNEXTLINE(cppcoreguidelines-owning-memory): the context owns it
        ticker->timer = new QTimer(context);
        ticker->timer->setTimerType(length < coarseFrom ? Qt::PreciseTimer : Qt::CoarseTimer);
        QObject::connect(ticker->timer, &QTimer::timeout, context, [ticker, once, work] {
            if (once || ticker->cancelled) {
                ticker->end();
            }
            if (!ticker->cancelled) {
                work();
            }
        });
        ticker->timer->start(length);
    };
    if (isCurrent()) {
        begin();
    } else {
        post(begin);
    }
    return Timer([ticker, main = context_->thread()] {
        ticker->cancelled = true;
        if (QThread::currentThread() == main) {
            ticker->end();
        }
    });
}

}  // namespace sordin
