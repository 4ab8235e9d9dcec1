// SPDX-License-Identifier: MIT
#pragma once

#include "rig/audio_server.h"
#include "rig/wait_until.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <iterator>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

namespace sordin {

/// The linear volume for a slider position from 0 to 1, as servers store it.
inline float cubed(double volume) {
    return static_cast<float>(volume * volume * volume);
}

/// Whether two linear volumes by channel are equal within the server's rounding.
inline bool sameVolume(const std::vector<float>& a, const std::vector<float>& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](float x, float y) { return std::fabs(x - y) < 1e-4F; });
}

/// Whether a sink gets this linear volume by channel. The failure message has the actual volume.
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

/// The linear volume by channel that PipeWire's session manager has stored for a virtual sink; empty if none.
inline std::vector<float> storedVolume(const AudioServer& server, const std::string& sink) {
    const auto folder = server.folder() / "state/wireplumber";
    // WirePlumber 0.4 writes SINK:channelVolumes=0.1;0.1, 0.5 SINK={..., "channelVolumes":[0.1, 0.1]}.
    const std::string text = contentsOf(folder / "restore-stream") + contentsOf(folder / "stream-properties");
    std::smatch found;
    std::regex_search(
        text, found, std::regex(sink + R"re((?::channelVolumes=|=\{.*"channelVolumes":\[)([-0-9.e;, ]+))re"));
    std::string numbers = found[1];
    std::replace_if(
        numbers.begin(), numbers.end(), [](char c) { return c == ';' || c == ','; }, ' ');
    std::istringstream in(numbers);
    return {std::istream_iterator<float>(in), {}};
}

}  // namespace sordin
