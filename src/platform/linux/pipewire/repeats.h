// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/pipewire/graph.h"
#include "platform/linux/pipewire/loop_sources.h"

#include <chrono>
#include <functional>
#include <set>

namespace sordin::pipewire {

/// Does something once more about objects of the server, half the delay to one and a half delays after the
/// latest request; and once in each delay while requests go on. Under the loop's lock.
class Repeats {
public:
    /// Throws std::runtime_error.
    Repeats(pw_loop* loop, std::chrono::milliseconds delay, std::function<void(GlobalId)> action);

    void request(GlobalId id);

private:
    void run();

    const std::chrono::milliseconds delay_;
    const std::function<void(GlobalId)> action_;
    std::set<GlobalId> requested_;
    std::chrono::steady_clock::time_point latest_;
    LoopTimer timer_;
};

}  // namespace sordin::pipewire
