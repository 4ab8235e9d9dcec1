// SPDX-License-Identifier: MIT
#pragma once

#include "classifier/sound_model.h"

#include <cstddef>
#include <vector>

namespace sordin {

/// Values by time, frequency and channel, the channels of one place side by side. Around all places there is
/// a margin of one that stays 0.
class Plane {
public:
    /// Convolutions work on so many channels at once, and fill up their output to whole blocks with zeros.
    static constexpr std::size_t block = 8;

    /// So many channels in whole blocks.
    [[nodiscard]] static std::size_t inBlocks(std::size_t channels) {
        return (channels + block - 1) / block * block;
    }

    Plane(PlaneSize size, std::size_t channels)
        : size_(size), channels_(channels), values_((size.times + 2) * (size.frequencies + 2) * channels) {}

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
    /// `inputChannels` is how many the input plane has: what the layer takes, or that in whole blocks. A
    /// residual layer needs whole blocks.
    Convolution(const SoundModel::Convolution& layer, std::size_t inputChannels);

    /// `output` has the size that the layer gives, and its channels in whole blocks.
    void apply(const Plane& input, Plane& output) const;

private:
    /// Output places that are worked on together, so that each weight is fetched once for all.
    static constexpr std::size_t group = 4;

    template <std::size_t places>
    void applyAt(const Plane& input, Plane& output, std::size_t time, std::size_t frequency) const;

    std::size_t inputChannels_;
    std::size_t strideTime_;
    std::size_t strideFrequency_;
    bool residual_;
    std::vector<float> bias_;     // of whole blocks of output channels
    std::vector<float> weights_;  // [block][3 times][3 frequencies][input channel][channel of the block]
};

}  // namespace sordin
