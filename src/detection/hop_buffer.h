// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace sordin {

/// Cuts a stream of samples into back-to-back hops of half a second, however it arrives.
class HopBuffer {
public:
    /// Sets the rate (Hz) of the samples to come; those already waiting stay. Ends the process for a rate of
    /// which half a second is not a number of samples (not finite, below 2 Hz, beyond memory).
    void setSampleRate(double sampleRate);

    /// Takes samples and calls `onHop(span)` with each hop that they fill. Samples that wait since a higher
    /// rate and already make a hop are handed on first, as they stand. The span is valid during the call; the
    /// memory is reused.
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

    /// How many samples of the next hop wait.
    [[nodiscard]] std::size_t waiting() const { return waiting_.size() < hopSize_ ? waiting_.size() : 0; }

    /// Drops what waits, and the memory for it.
    void clear();

private:
    /// Takes as much of `samples` as the current hop lacks and returns the rest.
    std::span<const float> fill(std::span<const float> samples);

    std::size_t hopSize_ = 8000;
    std::vector<float> waiting_;
};

}  // namespace sordin
