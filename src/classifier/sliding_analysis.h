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

/// A sound model moved along a stream of samples at its own rate, half a second from result to result. Each
/// frame is computed once and serves all results that look back on it. Allocates nothing once it is made.
class SlidingAnalysis {
public:
    /// Takes the confidences of one result, in the order of the model's labels.
    using ResultHandler = std::function<void(std::span<const double>)>;

    SlidingAnalysis(const SoundModel& model, ResultHandler onResult);

    /// Forgets all samples and embeddings and begins `sinceResult` samples after an instant for a result, in
    /// silence.
    void begin(std::int64_t sinceResult);

    /// Takes the next samples. The handler is called at each instant for a result, the first time once a
    /// second has been heard.
    void hear(std::span<const float> samples);

    /// How far back a result can look, seconds.
    [[nodiscard]] double memorySeconds() const;

private:
    void addFrame();
    void addResult();

    const SoundModel::FrontEnd settings_;
    const ResultHandler onResult_;
    MelFrontEnd frontEnd_;
    SoundNetwork network_;
    std::int64_t position_ = 0;     // samples since an instant for a result
    std::int64_t firstResult_ = 0;  // the position from which on there are results
    std::vector<float> window_;     // the frame that is being filled
    std::size_t filled_ = 0;        // samples of it
    std::vector<float> frames_;     // ring of the latest frames
    std::size_t oldest_ = 0;        // where in the ring the oldest begins
    std::vector<float> patch_;
    std::vector<float> memory_;  // the latest embeddings, oldest first
    std::vector<double> confidences_;
};

}  // namespace sordin
