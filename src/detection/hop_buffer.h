// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace sordin {

/// Cuts a stream of samples into contiguous hops of 0.5 s, independent of the sizes in which it arrives.
class HopBuffer {
public:
    /// Sets the sample rate (Hz) of the samples that follow; pending samples stay. Ends the process if 0.5 s
    /// is less than one or more than 1e9 samples, or if the rate is not finite.
    void setSampleRate(double sampleRate);

    /// Appends samples and calls `onHop(span)` with each hop that they complete. If the pending samples
    /// already fill a hop, because the rate has fallen, all of them are delivered first, as one hop. The span
    /// is valid only during the call.
    template <class OnHop>
    void append(std::span<const float> samples, OnHop&& onHop) {
        while (!samples.empty()) {
            if (waiting_.size() < hopSize_) {
                samples = fill(samples);
            }
            if (waiting_.size() >= hopSize_) {
                onHop(std::span<const float>(waiting_));
                waiting_.clear();
            }
        }
    }

    /// Number of pending samples of an incomplete hop; 0 if the pending samples already fill a hop.
    [[nodiscard]] std::size_t waiting() const { return waiting_.size() < hopSize_ ? waiting_.size() : 0; }

    /// Drops the pending samples and frees their memory.
    void clear();

private:
    /// Moves samples into the current hop until it is full. Returns the remaining samples.
    std::span<const float> fill(std::span<const float> samples);

    std::size_t hopSize_ = 8000;
    std::vector<float> waiting_;
};

}  // namespace sordin
