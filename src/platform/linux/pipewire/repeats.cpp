// SPDX-License-Identifier: MIT
#include "platform/linux/pipewire/repeats.h"

#include <utility>

namespace sordin::pipewire {

Repeats::Repeats(pw_loop* loop, std::chrono::milliseconds delay, std::function<void(GlobalId)> action)
    : delay_(delay), action_(std::move(action)), timer_(loop, [this] { run(); }) {}

void Repeats::request(GlobalId id) {
    if (requested_.empty()) {
        timer_.runAfter(delay_);
    }
    requested_.insert(id);
    latest_ = std::chrono::steady_clock::now();
}

void Repeats::run() {
    for (const GlobalId id : requested_) {
        action_(id);
    }
    if (std::chrono::steady_clock::now() < latest_ + delay_ / 2) {
        timer_.runAfter(delay_);  // too soon after the latest request
    } else {
        requested_.clear();
    }
}

}  // namespace sordin::pipewire
