// SPDX-License-Identifier: MIT
#include "support/manual_serial_queue.h"

#include "support/fatal.h"

#include <algorithm>
#include <cstdint>
#include <deque>
#include <optional>
#include <vector>

namespace sordin {

struct ManualSerialQueue::State {
    struct ActiveTimer {
        std::uint64_t id;
        Duration due;
        std::optional<Duration> interval;
        std::shared_ptr<const Work> work;
    };

    std::string label;
    std::deque<Work> waiting;
    std::vector<ActiveTimer> timers;
    Duration now{0};
    std::uint64_t nextTimer = 0;
    bool running = false;

    void run(const Work& work) {
        const bool outer = std::exchange(running, true);
        work();
        running = outer;
    }

    void runPending() {
        while (!waiting.empty()) {
            const Work work = std::move(waiting.front());
            waiting.pop_front();
            run(work);
        }
    }

    /// Runs the earliest timer that is due by `end`; of equally early ones, the one started first. Returns
    /// false if there is none.
    bool fireNext(Duration end) {
        const auto next = std::min_element(timers.begin(), timers.end(),
                                           [](const auto& a, const auto& b) { return a.due < b.due; });
        if (next == timers.end() || next->due > end) {
            return false;
        }
        now = std::max(now, next->due);
        const auto work = next->work;
        if (next->interval) {
            next->due += *next->interval;
        } else {
            timers.erase(next);
        }
        run(*work);
        runPending();
        return true;
    }

    void cancel(std::uint64_t id) {
        timers.erase(std::remove_if(timers.begin(), timers.end(), [id](const auto& t) { return t.id == id; }),
                     timers.end());
    }
};

namespace {

Timer start(const auto& state, SerialQueue::Duration delay, std::optional<SerialQueue::Duration> interval,
            SerialQueue::Work work) {
    const auto id = state->nextTimer++;
    state->timers.push_back({id, state->now + std::max(delay, SerialQueue::Duration::zero()), interval,
                             std::make_shared<const SerialQueue::Work>(std::move(work))});
    return Timer([weak = std::weak_ptr(state), id] {
        if (const auto alive = weak.lock()) {
            alive->cancel(id);
        }
    });
}

}  // namespace

ManualSerialQueue::ManualSerialQueue(std::string label) : state_(std::make_shared<State>()) {
    state_->label = std::move(label);
}

ManualSerialQueue::~ManualSerialQueue() {
    // Destroying work may destroy objects that post again.
    while (!state_->waiting.empty() || !state_->timers.empty()) {
        std::exchange(state_->waiting, {});
        std::exchange(state_->timers, {});
    }
}

const std::string& ManualSerialQueue::label() const noexcept {
    return state_->label;
}

void ManualSerialQueue::post(Work work) {
    state_->waiting.push_back(std::move(work));
}

void ManualSerialQueue::sync(const Work& work) {
    if (!isCurrent()) {
        runPending();
    }
    state_->run(work);
}

Timer ManualSerialQueue::after(Duration delay, Work work) {
    return start(state_, delay, std::nullopt, std::move(work));
}

Timer ManualSerialQueue::every(Duration interval, Work work) {
    if (interval <= Duration::zero()) {
        fatal("a repeating timer needs an interval above 0");
    }
    return start(state_, interval, interval, std::move(work));
}

bool ManualSerialQueue::isCurrent() const noexcept {
    return state_->running;
}

void ManualSerialQueue::runPending() {
    const auto state = state_;  // the work may destroy the queue
    state->runPending();
}

SerialQueue::Duration ManualSerialQueue::now() const {
    return state_->now;
}

void ManualSerialQueue::advance(Duration duration) {
    const auto state = state_;
    const auto end = state->now + duration;
    state->runPending();
    while (state->fireNext(end)) {
    }
    state->now = end;
}

}  // namespace sordin
