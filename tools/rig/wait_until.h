// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <thread>

namespace sordin {

/// Polls a condition every few milliseconds, at least once. Returns false if it is not true by the deadline.
template <class Condition>
bool waitUntil(Condition condition, std::chrono::milliseconds deadline) {
    const auto end = std::chrono::steady_clock::now() + deadline;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= end) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

}  // namespace sordin
