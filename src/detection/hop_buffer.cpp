// SPDX-License-Identifier: MIT
#include "detection/hop_buffer.h"

#include "support/fatal.h"

#include <algorithm>

namespace sordin {

void HopBuffer::setSampleRate(double sampleRate) {
    constexpr double hopSeconds = 0.5;
    constexpr double mostSamples = 1e9;
    const double samples = sampleRate * hopSeconds;
    if (!(samples >= 1 && samples <= mostSamples)) {
        fatal("unsupported sample rate: 0.5 s is not between 1 and 1e9 samples");
    }
    hopSize_ = static_cast<std::size_t>(samples);
    waiting_.reserve(hopSize_);
}

void HopBuffer::clear() {
    std::vector<float>().swap(waiting_);  // clear() would keep the memory
}

std::span<const float> HopBuffer::fill(std::span<const float> samples) {
    const std::size_t taken = std::min(hopSize_ - waiting_.size(), samples.size());
    const auto missing = samples.first(taken);
    waiting_.insert(waiting_.end(), missing.begin(), missing.end());
    return samples.subspan(taken);
}

}  // namespace sordin
