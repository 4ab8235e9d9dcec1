// SPDX-License-Identifier: MIT
#pragma once

#include "classifier/mel_front_end.h"
#include "classifier/sound_model.h"
#include "classifier/sound_network.h"

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace sordin {

/// Applies a sound model to a stream of samples at the model's rate, with a result every 0.5 s. Computes each
/// frame once for all results that use it. Allocates only in the constructor. Not thread-safe.
class SlidingAnalysis {
public:
    /// Receives the confidences of one result, 0 to 1, in the order of the model's labels.
    using ResultHandler = std::function<void(std::span<const double>)>;

    SlidingAnalysis(const SoundModel& model, ResultHandler onResult);

    /// Restarts with silence as the past. `sinceResult` is the number of samples from the last instant of a
    /// result to the next sample, less than 0.5 s.
    void begin(std::int64_t sinceResult);

    /// Takes the next samples. Calls the handler at each instant of a result, at the earliest one second
    /// after the start.
    void hear(std::span<const float> samples);

    /// Length of the audio that a result can depend on, seconds.
    [[nodiscard]] double memorySeconds() const;

private:
    void addFrame();
    void addResult();

    const SoundModel::FrontEnd settings_;
    const ResultHandler onResult_;
    MelFrontEnd frontEnd_;
    SoundNetwork network_;
    std::int64_t position_ = 0;  // in samples; multiples of the result interval are the instants of results
    std::int64_t firstResult_ = 0;  // no results before this position
    std::vector<float> window_;     // the current frame
    std::size_t filled_ = 0;        // number of valid samples in window_
    std::vector<float> frames_;     // ring of the latest frames
    std::size_t oldest_ = 0;        // index of the oldest frame's first value
    std::vector<float> patch_;
    std::vector<float> memory_;  // the latest embeddings, oldest first
    std::vector<double> confidences_;
};

}  // namespace sordin
