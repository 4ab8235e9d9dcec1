// SPDX-License-Identifier: MIT
#pragma once

#include "classifier/sound_model.h"

#include <cstddef>
#include <vector>

namespace sordin {

/// Values by time, frequency and channel. The channels of one place (a time and a frequency) are contiguous.
/// A border of one place on each side stays 0: the padding of the convolutions.
class Plane {
public:
    /// Number of channels that a convolution computes at once. It pads its output to whole blocks with zeros.
    static constexpr std::size_t block = 8;

    /// Number of channels, rounded up to whole blocks.
    [[nodiscard]] static std::size_t inBlocks(std::size_t channels) {
        return (channels + block - 1) / block * block;
    }

    Plane(PlaneSize size, std::size_t channels)
        : size_(size), channels_(channels), values_((size.times + 2) * (size.frequencies + 2) * channels) {}

    [[nodiscard]] PlaneSize size() const { return size_; }
    /// Number of floats from one place to the next in frequency.
    [[nodiscard]] std::size_t placeStep() const { return channels_; }
    /// Number of floats from one place to the next in time.
    [[nodiscard]] std::size_t timeStep() const { return (size_.frequencies + 2) * channels_; }

    /// The channels of a place. Indices include the border: (1, 1) is the first place inside it.
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

/// A 3 x 3 convolution with ReLU. Takes nearly all of the network's computing time.
class Convolution {
public:
    /// `inputChannels` is the number of channels of the input plane: layer.in, or layer.in rounded up to
    /// whole blocks. A residual layer needs whole blocks.
    Convolution(const SoundModel::Convolution& layer, std::size_t inputChannels);

    /// Writes to `output`, whose size must be outputSize() of the layer, with channels in whole blocks.
    void apply(const Plane& input, Plane& output) const;

private:
    /// Number of output places that are computed together and share each load of a weight.
    static constexpr std::size_t group = 4;

    template <std::size_t places>
    void applyAt(const Plane& input, Plane& output, std::size_t time, std::size_t frequency) const;

    std::size_t inputChannels_;
    std::size_t strideTime_;
    std::size_t strideFrequency_;
    bool residual_;
    std::vector<float> bias_;     // [output channel], padded to whole blocks
    std::vector<float> weights_;  // [block][3 times][3 frequencies][input channel][channel of the block]
};

}  // namespace sordin
