// SPDX-License-Identifier: MIT
#pragma once

#include "rig/audio_server.h"
#include "rig/wait_until.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <string>
#include <vector>

namespace sordin {

/// The linear volume, as servers keep it, of a slider's place from 0 to 1.
inline float cubed(double volume) {
    return static_cast<float>(volume * volume * volume);
}

/// Whether two volumes, linear, by channel, are the same but for what a server rounds.
inline bool sameVolume(const std::vector<float>& a, const std::vector<float>& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](float x, float y) { return std::fabs(x - y) < 1e-4F; });
}

/// Whether a sink comes to have this volume, linear, by channel; it says which it has otherwise.
inline testing::AssertionResult sinkBecomes(const AudioServer& server, const std::string& sink,
                                            const std::vector<float>& volume,
                                            std::chrono::milliseconds within) {
    std::vector<float> now;
    const auto so = [&] {
        now = server.volume(sink);
        return sameVolume(now, volume);
    };
    return (waitUntil(so, within) ? testing::AssertionSuccess() : testing::AssertionFailure())
           << testing::PrintToString(now);
}

}  // namespace sordin
