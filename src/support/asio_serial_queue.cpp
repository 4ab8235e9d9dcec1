// SPDX-License-Identifier: MIT
#include "support/asio_serial_queue.h"

#include "support/fatal.h"

#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <asio/steady_timer.hpp>

#include <atomic>
#include <cstdint>
#include <future>
#include <map>
#include <optional>
#include <pthread.h>
#include <sys/resource.h>

namespace sordin {

namespace {

using Deadline = std::chrono::steady_clock::time_point;

void setUpThread(const std::string& label, QualityOfService quality) {
#ifdef __APPLE__
    pthread_setname_np(label.c_str());
    (void)quality;
#else
    constexpr std::size_t longestName = 15;  // the kernel's limit without the terminating null
    pthread_setname_np(pthread_self(), label.substr(0, longestName).c_str());
    if (quality == QualityOfService::utility) {
        constexpr int yielding = 10;
        setpriority(PRIO_PROCESS, 0, yielding);  // 0 is the calling thread; a failure does no harm
    }
#endif
}

void run(const SerialQueue::Work& work) noexcept {
    work();
}

}  // namespace

/// The event loop and its timers. Only the loop's thread accesses `timers_`.
class AsioSerialQueue::Loop : public std::enable_shared_from_this<Loop> {
public:
    explicit Loop(std::string label) : label_(std::move(label)) {}

    [[nodiscard]] const std::string& label() const noexcept { return label_; }

    [[nodiscard]] bool isCurrent() noexcept { return io_.get_executor().running_in_this_thread(); }

    void run() {
        io_.run();
        timers_.clear();
    }

    void post(Work work) {
        asio::post(io_, [work = std::move(work)] { sordin::run(work); });
    }

    /// Makes run() return after the work posted so far. Drops later work. Call from another thread.
    void endWhenIdle() {
        ended_.store(true);
        asio::post(io_, [this] { io_.stop(); });
    }

    /// Makes run() return after the current work item. Call from within the work item.
    void endNow() {
        ended_.store(true);
        io_.stop();
    }

    Timer start(Duration delay, std::optional<Duration> interval, Work work) {
        const auto deadline = std::chrono::steady_clock::now() + delay;
        const auto id = nextTimer_.fetch_add(1);
        const auto cancelled = std::make_shared<std::atomic<bool>>(false);
        onLoop([this, id, deadline, interval, cancelled, work = std::move(work)] {
            if (!cancelled->load()) {
                timers_.emplace(id, ActiveTimer{asio::steady_timer(io_), deadline, interval, cancelled,
                                                std::make_shared<const Work>(work)});
                arm(id);
            }
        });
        return Timer([weak = weak_from_this(), id, cancelled] {
            cancelled->store(true);
            if (const auto loop = weak.lock()) {
                // Destroy the timer now, not at its deadline. Destroying its work may cancel other timers, so
                // extract the entry first: the map is then consistent.
                loop->onLoop([raw = loop.get(), id] { const auto gone = raw->timers_.extract(id); });
            }
        });
    }

private:
    struct ActiveTimer {
        asio::steady_timer timer;
        Deadline deadline;
        std::optional<Duration> interval;
        std::shared_ptr<std::atomic<bool>> cancelled;
        std::shared_ptr<const Work> work;
    };

    void onLoop(const Work& work) {
        if (isCurrent()) {
            work();
        } else {
            post(work);
        }
    }

    void arm(std::uint64_t id) {
        auto& timer = timers_.at(id);
        timer.timer.expires_at(timer.deadline);
        timer.timer.async_wait([this, id](const asio::error_code& error) {
            if (!error) {
                fire(id);
            }
        });
    }

    void fire(std::uint64_t id) {
        const auto found = timers_.find(id);
        if (found == timers_.end() || ended_.load()) {
            return;
        }
        const auto work = found->second.work;  // the work may cancel and thereby erase its timer
        const auto cancelled = found->second.cancelled;
        if (found->second.interval) {
            const auto late = std::chrono::steady_clock::now() - found->second.deadline;
            found->second.deadline += *found->second.interval * (1 + late / *found->second.interval);
            arm(id);
        } else {
            timers_.erase(found);
        }
        if (!cancelled->load()) {
            sordin::run(*work);
        }
    }

    const std::string label_;
    // No single-threaded hint: with it, work posted by other threads would overtake work that the loop's own
    // thread posted before.
    asio::io_context io_;
    asio::executor_work_guard<asio::io_context::executor_type> guard_ = asio::make_work_guard(io_);
    std::atomic<bool> ended_ = false;  // timers no longer fire
    std::atomic<std::uint64_t> nextTimer_ = 0;
    std::map<std::uint64_t, ActiveTimer> timers_;
};

AsioSerialQueue::AsioSerialQueue(std::string label, QualityOfService quality)
    : loop_(std::make_shared<Loop>(std::move(label))), thread_([loop = loop_, quality] {
          setUpThread(loop->label(), quality);
          loop->run();
      }) {}

AsioSerialQueue::~AsioSerialQueue() {
    if (isCurrent()) {
        loop_->endNow();
        thread_.detach();
    } else {
        loop_->endWhenIdle();
        thread_.join();
    }
}

const std::string& AsioSerialQueue::label() const noexcept {
    return loop_->label();
}

void AsioSerialQueue::post(Work work) {
    loop_->post(std::move(work));
}

void AsioSerialQueue::sync(const Work& work) {
    if (isCurrent()) {
        run(work);
        return;
    }
    // Only the posted work owns the promise. If the queue drops the work, the promise breaks and the wait
    // ends.
    auto done = std::make_shared<std::promise<void>>();
    const auto finished = done->get_future();
    loop_->post([&work, done = std::move(done)] {
        work();
        done->set_value();
    });
    finished.wait();
}

Timer AsioSerialQueue::after(Duration delay, Work work) {
    return loop_->start(delay, std::nullopt, std::move(work));
}

Timer AsioSerialQueue::every(Duration interval, Work work) {
    if (interval <= Duration::zero()) {
        fatal("a repeating timer needs an interval above 0");
    }
    return loop_->start(interval, interval, std::move(work));
}

bool AsioSerialQueue::isCurrent() const noexcept {
    return loop_->isCurrent();
}

}  // namespace sordin
