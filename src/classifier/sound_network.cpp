// SPDX-License-Identifier: MIT
#include "classifier/sound_network.h"

#include "detection/sample_math.h"

#include <algorithm>
#include <cmath>

namespace sordin {

namespace {

void applyDense(const SoundModel::Dense& layer, std::span<const float> input, std::span<float> output) {
    const std::span weights(layer.weights);
    for (std::size_t i = 0; i < layer.out; ++i) {
        output[i] = dotProduct(weights.subspan(i * layer.in, layer.in), input) + layer.bias[i];
    }
}

void rectify(std::span<float> values) {
    for (float& value : values) {
        value = value > 0 ? value : 0;
    }
}

}  // namespace

SoundNetwork::SoundNetwork(const SoundModel& model)
    : sections_(model.sections),
      channels_(model.convolutions.back().out),
      embedding_(model.embedding),
      dense_(model.dense),
      labels_(model.labels),
      features_(model.embedding.in) {
    PlaneSize size = inputSize(model.frontEnd);
    // The patch has one channel. Padding it to a block would multiply the work of the first layer.
    planes_.emplace_back(size, model.convolutions.front().residual ? Plane::block : 1);
    for (const SoundModel::Convolution& layer : model.convolutions) {
        convolutions_.emplace_back(layer, planes_.back().placeStep());
        size = outputSize(layer, size);
        planes_.emplace_back(size, Plane::inBlocks(layer.out));
    }
    for (const SoundModel::Dense& layer : dense_) {
        outputs_.emplace_back(layer.out);
    }
}

void SoundNetwork::embed(std::span<const float> patch, std::span<float> embedding) {
    Plane& input = planes_.front();
    const auto [times, frequencies] = input.size();
    for (std::size_t time = 0; time < times; ++time) {
        for (std::size_t frequency = 0; frequency < frequencies; ++frequency) {
            *input.at(time + 1, frequency + 1) = patch[time * frequencies + frequency];
        }
    }
    for (std::size_t i = 0; i < convolutions_.size(); ++i) {
        convolutions_[i].apply(planes_[i], planes_[i + 1]);
    }
    summarise(planes_.back());
    applyDense(embedding_, features_, embedding);
    rectify(embedding);
}

void SoundNetwork::summarise(const Plane& plane) {
    const auto [times, frequencies] = plane.size();
    float* means = features_.data();
    for (std::size_t section = 0; section < sections_; ++section) {
        const std::size_t begin = section * times / sections_;
        const std::size_t end = (section + 1) * times / sections_;
        float* const maxima = means + channels_ * frequencies;
        for (std::size_t frequency = 0; frequency < frequencies; ++frequency) {
            for (std::size_t channel = 0; channel < channels_; ++channel) {
                float sum = 0;
                float largest = 0;  // values are not negative after a ReLU
                for (std::size_t time = begin; time < end; ++time) {
                    const float value = plane.at(time + 1, frequency + 1)[channel];
                    sum += value;
                    largest = std::max(largest, value);
                }
                means[channel * frequencies + frequency] = sum / static_cast<float>(end - begin);
                maxima[channel * frequencies + frequency] = largest;
            }
        }
        means = maxima + channels_ * frequencies;
    }
}

void SoundNetwork::confidences(std::span<const float> memory, std::span<double> confidences) {
    std::span<const float> input = memory;
    for (std::size_t i = 0; i < dense_.size(); ++i) {
        applyDense(dense_[i], input, outputs_[i]);
        if (i + 1 < dense_.size()) {
            rectify(outputs_[i]);
        }
        input = outputs_[i];
    }
    for (std::size_t i = 0; i < labels_.size(); ++i) {
        const double evidence = static_cast<double>(labels_[i].gain) * static_cast<double>(input[i]) +
                                static_cast<double>(labels_[i].offset);
        const double confidence = 1 / (1 + std::exp(-evidence));
        // Large weights can make the sums overflow to NaN, which counts as 0.
        confidences[i] = confidence > 0 ? confidence : 0;
    }
}

}  // namespace sordin
