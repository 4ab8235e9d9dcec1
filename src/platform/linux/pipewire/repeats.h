// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/pipewire/graph.h"
#include "platform/linux/pipewire/loop_sources.h"

#include <chrono>
#include <functional>
#include <set>

namespace sordin::pipewire {

/// Repeats an action for objects of the server: once for each delay while requests continue, and for the last
/// time half a delay to one and a half delays after the latest request. Call it under the loop's lock.
class Repeats {
public:
    /// Throws std::runtime_error if the loop accepts no more sources.
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
