// SPDX-License-Identifier: MIT
#pragma once

#include "detection/detection_records.h"

#include <array>
#include <cstddef>

namespace sordin {

/// The newest `capacity` band vectors, oldest first.
template <std::size_t capacity>
class BandRing {
public:
    /// Adds the newest vector. Replaces the oldest if the ring is full.
    void push(const Bands& bands) {
        vectors_[(first_ + size_) % capacity] = bands;
        if (full()) {
            first_ = (first_ + 1) % capacity;
        } else {
            ++size_;
        }
    }

    void clear() { first_ = size_ = 0; }

    [[nodiscard]] std::size_t size() const { return size_; }
    [[nodiscard]] bool full() const { return size_ == capacity; }

    /// The vector at `index`, which must be less than size(). Index 0 is the oldest.
    [[nodiscard]] const Bands& operator[](std::size_t index) const {
        return vectors_[(first_ + index) % capacity];
    }

private:
    std::array<Bands, capacity> vectors_{};
    std::size_t first_ = 0;
    std::size_t size_ = 0;
};

}  // namespace sordin
