// SPDX-License-Identifier: MIT
#pragma once

#include "platform/audio_objects.h"

#include <chrono>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace sordin::audio {

/// Levels and state of an interval of half a second.
struct Level {
    double rms = 0;   ///< full scale is 1
    double peak = 0;  ///< largest magnitude
    std::int64_t frames = 0;
    std::string device;  ///< the default output device; empty if there is none
    std::optional<float> volume;
    std::vector<std::string> playing;
    std::string source;
};

/// Prints events, each on a line with the seconds since the start. Any thread.
class Printer {
public:
    explicit Printer(bool json) : json_(json) {}

    /// Prints a change of state, for example "listening", with the text for the user.
    void state(const std::string& state, const std::string& detail = {});
    void level(const Level& level);
    /// Prints a write of the device's volume.
    void volume(const std::string& device, float volume);

private:
    [[nodiscard]] double seconds() const;
    void print(const std::string& line);

    const bool json_;
    const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    std::mutex mutex_;
};

}  // namespace sordin::audio
