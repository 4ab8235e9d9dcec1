// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <spa/utils/ringbuffer.h>
#include <span>
#include <vector>

namespace sordin::pipewire {

/// Passes samples from one writing to one reading thread without locks. write() does not allocate memory.
class SampleRing {
public:
    SampleRing() { spa_ringbuffer_init(&ring_); }

    /// Writing thread only. Adds as many samples as fit; returns the number of unread samples.
    std::size_t write(std::span<const float> samples) {
        std::uint32_t index = 0;
        const auto waiting = static_cast<std::size_t>(spa_ringbuffer_get_write_index(&ring_, &index));
        const std::size_t count = std::min(samples.size(), capacity - waiting);
        for (std::size_t i = 0; i < count; ++i) {
            samples_[index++ % capacity] = samples[i];
        }
        spa_ringbuffer_write_update(&ring_, static_cast<std::int32_t>(index));
        return waiting + count;
    }

    /// Reading thread only. Removes and returns all unread samples.
    [[nodiscard]] std::vector<float> take() {
        std::uint32_t index = 0;
        const auto waiting = static_cast<std::size_t>(spa_ringbuffer_get_read_index(&ring_, &index));
        std::vector<float> samples(waiting);
        for (float& sample : samples) {
            sample = samples_[index++ % capacity];
        }
        spa_ringbuffer_read_update(&ring_, static_cast<std::int32_t>(index));
        return samples;
    }

private:
    static constexpr std::size_t capacity = 32'768;  // two seconds; a power of two because indices wrap
    spa_ringbuffer ring_{};
    std::vector<float> samples_ = std::vector<float>(capacity);
};

}  // namespace sordin::pipewire
