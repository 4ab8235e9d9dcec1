// SPDX-License-Identifier: MIT
#pragma once

#include "classifier/sound_model.h"

#include <cstddef>
#include <vector>

namespace sordin {

/// Values by time, frequency and channel, the channels of one place side by side. Around all places there is
/// a margin of one that stays 0, and so do the channels that fill up the last block.
class Plane {
public:
    /// Channels are laid out in whole blocks of so many, except a single one.
    static constexpr std::size_t block = 8;

    Plane(PlaneSize size, std::size_t channels);

    [[nodiscard]] PlaneSize size() const { return size_; }
    /// From one place to the next in frequency.
    [[nodiscard]] std::size_t placeStep() const { return channels_; }
    /// From one place to the next in time.
    [[nodiscard]] std::size_t timeStep() const { return (size_.frequencies + 2) * channels_; }

    /// The channels of a place; times and frequencies count from the margin, so that (1, 1) is the first
    /// place that is not in it.
    [[nodiscard]] float* at(std::size_t time, std::size_t frequency) {
        return values_.data() + time * timeStep() + frequency * placeStep();
    }
    [[nodiscard]] const float* at(std::size_t time, std::size_t frequency) const {
        return values_.data() + time * timeStep() + frequency * placeStep();
    }

private:
    PlaneSize size_;
    std::size_t channels_;
    std::vector<float> values_;
};

/// One convolution of 3 x 3 with its ReLU, from plane to plane. This is where nearly all of the time goes.
class Convolution {
public:
    explicit Convolution(const SoundModel::Convolution& layer);

    /// `input` has as many channels as the layer takes, `output` the size and channels that it gives.
    void apply(const Plane& input, Plane& output) const;

private:
    /// Output places that are worked on together, so that each weight is fetched once for all.
    static constexpr std::size_t group = 4;

    template <std::size_t places>
    void applyAt(const Plane& input, Plane& output, std::size_t time, std::size_t frequency) const;

    std::size_t inputChannels_;  // as the planes hold them
    std::size_t strideTime_;
    std::size_t strideFrequency_;
    bool residual_;
    std::vector<float> bias_;     // of whole blocks of output channels
    std::vector<float> weights_;  // [block][3 times][3 frequencies][input channel][channel of the block]
};

}  // namespace sordin
