// SPDX-License-Identifier: MIT
#include "platform/linux/pulse/stream_mixer.h"

#include <algorithm>
#include <functional>

namespace sordin::pulse {

namespace {

/// Adds samples to `sum`, as many as both contain, and removes them from `samples`.
void move(std::vector<float>& samples, std::vector<float>& sum) {
    const auto count = static_cast<std::ptrdiff_t>(std::min(samples.size(), sum.size()));
    std::transform(samples.begin(), samples.begin() + count, sum.begin(), sum.begin(), std::plus<>());
    samples.erase(samples.begin(), samples.begin() + count);
}

}  // namespace

void StreamMixer::add(Stream stream, std::span<const float> samples) {
    auto& waiting = waiting_[stream];
    waiting.insert(waiting.end(), samples.begin(), samples.end());
}

void StreamMixer::remove(Stream stream) {
    const auto found = waiting_.find(stream);
    if (found != waiting_.end()) {
        ended_.resize(std::max(ended_.size(), found->second.size()));
        move(found->second, ended_);
        waiting_.erase(found);
    }
}

std::vector<float> StreamMixer::take() {
    std::size_t longest = 0;
    std::size_t complete = waiting_.empty() ? ended_.size() : SIZE_MAX;
    for (const auto& stream : waiting_) {
        longest = std::max(longest, stream.second.size());
        complete = std::min(complete, stream.second.size());
    }
    std::vector<float> sum(std::max(complete, longest > patience_ ? longest - patience_ : 0));
    for (auto& stream : waiting_) {
        move(stream.second, sum);
    }
    move(ended_, sum);
    return sum;
}

}  // namespace sordin::pulse
