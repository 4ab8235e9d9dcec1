// SPDX-License-Identifier: MIT
#include "classifier/convolution.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace sordin {

namespace {

constexpr std::size_t kernel = 3;

/// A vector register of channels, an extension of GCC and Clang that compiles for every machine. Each lane
/// sums one channel, so the order of the sums, and the result, does not depend on the register's width.
using Lanes [[gnu::vector_size(16)]] = float;
using Block = std::array<Lanes, Plane::block * sizeof(float) / sizeof(Lanes)>;

Block load(const float* channels) {
    Block block;
    std::memcpy(block.data(), channels, sizeof(block));
    return block;
}

void addProduct(Block& sums, float value, const Block& weights) {
    for (std::size_t i = 0; i < sums.size(); ++i) {
        sums[i] += value * weights[i];
    }
}

/// Applies the ReLU. NaN becomes 0.
void storePositive(const Block& sums, float* channels) {
    Block positive;
    for (std::size_t i = 0; i < sums.size(); ++i) {
        positive[i] = sums[i] > 0.0F ? sums[i] : Lanes{};
    }
    std::memcpy(channels, positive.data(), sizeof(positive));
}

}  // namespace

Convolution::Convolution(const SoundModel::Convolution& layer, std::size_t inputChannels)
    : inputChannels_(inputChannels),
      strideTime_(layer.strideTime),
      strideFrequency_(layer.strideFrequency),
      residual_(layer.residual),
      bias_(Plane::inBlocks(layer.out)),
      weights_(bias_.size() * kernel * kernel * inputChannels_) {
    std::copy(layer.bias.begin(), layer.bias.end(), bias_.begin());
    auto weight = layer.weights.begin();
    for (std::size_t out = 0; out < layer.out; ++out) {
        for (std::size_t in = 0; in < layer.in; ++in) {
            for (std::size_t k = 0; k < kernel * kernel; ++k) {
                const std::size_t row = (out / Plane::block * kernel * kernel + k) * inputChannels_ + in;
                weights_[row * Plane::block + out % Plane::block] = *weight++;
            }
        }
    }
}

template <std::size_t places>
void Convolution::applyAt(const Plane& input, Plane& output, std::size_t time, std::size_t frequency) const {
    const std::size_t step = strideFrequency_ * inputChannels_;
    const std::size_t run = kernel * inputChannels_;  // neighbors in frequency are contiguous
    const float* weight = weights_.data();
    for (std::size_t channel = 0; channel < bias_.size(); channel += Plane::block) {
        std::array<Block, places> sums;
        sums.fill(load(bias_.data() + channel));
        for (std::size_t row = 0; row < kernel; ++row) {
            const float* const values = input.at(time * strideTime_ + row, frequency * strideFrequency_);
            for (std::size_t i = 0; i < run; ++i) {
                const Block weights = load(weight);
                weight += Plane::block;
                for (std::size_t place = 0; place < places; ++place) {
                    addProduct(sums[place], values[place * step + i], weights);
                }
            }
        }
        for (std::size_t place = 0; place < places; ++place) {
            if (residual_) {
                addProduct(sums[place], 1, load(input.at(time + 1, frequency + 1 + place) + channel));
            }
            storePositive(sums[place], output.at(time + 1, frequency + 1 + place) + channel);
        }
    }
}

void Convolution::apply(const Plane& input, Plane& output) const {
    const PlaneSize size = output.size();
    for (std::size_t time = 0; time < size.times; ++time) {
        std::size_t frequency = 0;
        for (; frequency + group <= size.frequencies; frequency += group) {
            applyAt<group>(input, output, time, frequency);
        }
        for (; frequency < size.frequencies; ++frequency) {
            applyAt<1>(input, output, time, frequency);
        }
    }
}

}  // namespace sordin
