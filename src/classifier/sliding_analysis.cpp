// SPDX-License-Identifier: MIT
#include "classifier/sliding_analysis.h"

#include <algorithm>
#include <utility>

namespace sordin {

SlidingAnalysis::SlidingAnalysis(const SoundModel& model, ResultHandler onResult)
    : settings_(model.frontEnd),
      onResult_(std::move(onResult)),
      frontEnd_(model.frontEnd),
      network_(model),
      window_(settings_.window),
      frames_(std::size_t{settings_.frames} * settings_.mels),
      patch_(frames_.size()),
      memory_(network_.memorySize()),
      confidences_(model.labels.size()) {
    begin(0);
}

double SlidingAnalysis::memorySeconds() const {
    const auto instants = memory_.size() / network_.embeddingSize();
    const auto patch = std::size_t{settings_.frames - 1} * settings_.hop + settings_.window;
    return static_cast<double>((instants - 1) * resultInterval(settings_) + patch) / settings_.rate;
}

void SlidingAnalysis::begin(std::int64_t sinceResult) {
    position_ = sinceResult;
    firstResult_ = sinceResult + settings_.rate;
    // Frames end at multiples of the hop, so the last frame of a patch ends at the instant of the result.
    const auto missing = settings_.hop - static_cast<std::size_t>(sinceResult % settings_.hop);
    filled_ = window_.size() - missing;
    std::fill(window_.begin(), window_.end(), 0.0F);
    std::fill(frames_.begin(), frames_.end(), frontEnd_.silence());
    std::fill(memory_.begin(), memory_.end(), 0.0F);
}

void SlidingAnalysis::hear(std::span<const float> samples) {
    while (!samples.empty()) {
        const auto taken = samples.first(std::min(samples.size(), window_.size() - filled_));
        std::copy(taken.begin(), taken.end(), window_.begin() + static_cast<std::ptrdiff_t>(filled_));
        samples = samples.subspan(taken.size());
        filled_ += taken.size();
        position_ += static_cast<std::int64_t>(taken.size());
        if (filled_ < window_.size()) {
            return;
        }
        addFrame();
        if (position_ % resultInterval(settings_) == 0 && position_ >= firstResult_) {
            addResult();
        }
    }
}

void SlidingAnalysis::addFrame() {
    frontEnd_.frame(window_, std::span(frames_).subspan(oldest_, settings_.mels));
    oldest_ = (oldest_ + settings_.mels) % frames_.size();
    std::copy(window_.begin() + settings_.hop, window_.end(), window_.begin());
    filled_ -= settings_.hop;
}

void SlidingAnalysis::addResult() {
    const auto oldest = frames_.begin() + static_cast<std::ptrdiff_t>(oldest_);
    std::rotate_copy(frames_.begin(), oldest, frames_.end(), patch_.begin());
    const auto size = static_cast<std::ptrdiff_t>(network_.embeddingSize());
    std::copy(memory_.begin() + size, memory_.end(), memory_.begin());
    network_.embed(frontEnd_.normalise(patch_), std::span(memory_).last(network_.embeddingSize()));
    network_.confidences(memory_, confidences_);
    onResult_(confidences_);
}

}  // namespace sordin
