// SPDX-License-Identifier: MIT
#include "platform/linux/pipewire/loop_sources.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace sordin::pipewire {

namespace {

spa_source* checked(spa_source* source) {
    if (source == nullptr) {
        throw std::runtime_error("Cannot add a source to the PipeWire loop.");
    }
    return source;
}

void runAction(void* data, std::uint64_t /*count*/) {
    (*static_cast<std::function<void()>*>(data))();
}

}  // namespace

LoopEvent::LoopEvent(pw_loop* loop, std::function<void()> action)
    : loop_(loop),
      action_(std::move(action)),
      source_(checked(pw_loop_add_event(loop, &runAction, &action_))) {}

LoopEvent::~LoopEvent() {
    pw_loop_destroy_source(loop_, source_);
}

void LoopEvent::signal() {
    pw_loop_signal_event(loop_, source_);
}

LoopTimer::LoopTimer(pw_loop* loop, std::function<void()> action)
    : loop_(loop),
      action_(std::move(action)),
      source_(checked(pw_loop_add_timer(loop, &runAction, &action_))) {}

LoopTimer::~LoopTimer() {
    pw_loop_destroy_source(loop_, source_);
}

void LoopTimer::runAfter(std::chrono::nanoseconds delay) {
    const auto positive = std::max(delay, std::chrono::nanoseconds(1));  // zero would stop the timer
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(positive);
    timespec value{static_cast<std::time_t>(seconds.count()),
                   static_cast<long>((positive - seconds).count())};
    pw_loop_update_timer(loop_, source_, &value, nullptr, false);
}

}  // namespace sordin::pipewire
