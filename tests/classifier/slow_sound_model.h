// SPDX-License-Identifier: MIT
// A reference implementation of the sound model: plain sums in double precision.
#pragma once

#include "classifier/sound_model.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdint>
#include <numbers>
#include <vector>

namespace sordin {

class SlowSoundModel {
public:
    using Values = std::vector<double>;

    explicit SlowSoundModel(const SoundModel& model) : model_(model) {}

    /// The bands of one frame.
    [[nodiscard]] Values frame(const std::vector<float>& samples) const {
        const auto& f = model_.frontEnd;
        Values magnitudes(f.transform / 2 + 1);
        for (std::size_t k = 0; k < magnitudes.size(); ++k) {
            std::complex<double> bin = 0;
            for (std::size_t n = 0; n < f.window; ++n) {
                const double window = 0.5 - 0.5 * std::cos(2 * pi * static_cast<double>(n) / f.window);
                const double angle = -2 * pi * static_cast<double>(k * n % f.transform) / f.transform;
                bin += static_cast<double>(samples[n]) * window * std::polar(1.0, angle);
            }
            magnitudes[k] = std::abs(bin);
        }
        Values bands(f.mels);
        for (std::size_t band = 0; band < f.mels; ++band) {
            const double lower = edge(band);
            const double centre = edge(band + 1);
            const double upper = edge(band + 2);
            double sum = 0;
            for (std::size_t k = 1; k < magnitudes.size(); ++k) {
                const double m = mel(static_cast<double>(k) * f.rate / f.transform);
                sum += magnitudes[k] * std::max(0.0, std::min((m - lower) / (centre - lower),
                                                              (upper - m) / (upper - centre)));
            }
            bands[band] = std::log(sum + static_cast<double>(f.floor));
        }
        return bands;
    }

    /// The normalized input of the network for a patch of frames.
    [[nodiscard]] Values normalised(Values patch) const {
        const auto& f = model_.frontEnd;
        const double lowest = *std::max_element(patch.begin(), patch.end()) - static_cast<double>(f.range);
        double mean = 0;
        for (double& value : patch) {
            value = std::max(value, lowest);
            mean += value / static_cast<double>(patch.size());
        }
        Values pooled(std::size_t{f.frames / f.pool} * f.mels);
        for (std::size_t i = 0; i < f.frames / f.pool * f.pool * f.mels; ++i) {
            pooled[i / f.mels / f.pool * f.mels + i % f.mels] +=
                (patch[i] - mean) / static_cast<double>(f.scale) / f.pool;
        }
        return pooled;
    }

    [[nodiscard]] Values embedding(Values plane) const {
        PlaneSize size = inputSize(model_.frontEnd);
        for (const auto& layer : model_.convolutions) {
            plane = convolved(layer, plane, size);
            size = outputSize(layer, size);
        }
        const std::size_t channels = model_.convolutions.back().out;
        Values features;
        for (std::size_t p = 0; p < model_.sections; ++p) {
            for (const bool maximum : {false, true}) {
                for (std::size_t i = 0; i < channels * size.frequencies; ++i) {
                    const std::size_t begin = p * size.times / model_.sections;
                    const std::size_t end = (p + 1) * size.times / model_.sections;
                    double sum = 0;
                    double largest = 0;
                    for (std::size_t t = begin; t < end; ++t) {
                        const double value =
                            plane[(i / size.frequencies * size.times + t) * size.frequencies +
                                  i % size.frequencies];
                        sum += value;
                        largest = std::max(largest, value);
                    }
                    features.push_back(maximum ? largest : sum / static_cast<double>(end - begin));
                }
            }
        }
        return rectified(dense(model_.embedding, features));
    }

    /// The confidences of all remembered embeddings, oldest first.
    [[nodiscard]] Values confidences(Values values) const {
        for (std::size_t i = 0; i < model_.dense.size(); ++i) {
            values = dense(model_.dense[i], values);
            if (i + 1 < model_.dense.size()) {
                values = rectified(values);
            }
        }
        for (std::size_t i = 0; i < values.size(); ++i) {
            const auto& label = model_.labels[i];
            values[i] = 1 / (1 + std::exp(-(static_cast<double>(label.gain) * values[i] +
                                            static_cast<double>(label.offset))));
        }
        return values;
    }

    /// One result of a stream.
    struct Result {
        std::int64_t position;  // samples
        Values confidences;
    };

    /// The results for samples at the model's rate; the first sample has this position.
    [[nodiscard]] std::vector<Result> results(const std::vector<float>& samples,
                                              std::int64_t first = 0) const {
        const auto& f = model_.frontEnd;
        const std::int64_t half = f.rate / 2;
        std::vector<Result> results;
        Values memory(std::size_t{model_.memory} * model_.embedding.out);
        const auto end = first + static_cast<std::int64_t>(samples.size());
        for (std::int64_t at = (first + f.rate + half - 1) / half * half; at <= end; at += half) {
            Values patch;
            for (std::uint32_t t = 0; t < f.frames; ++t) {
                std::vector<float> window(f.window);
                for (std::uint32_t n = 0; n < f.window; ++n) {
                    const std::int64_t i = at - std::int64_t{f.frames - 1 - t} * f.hop - f.window + n - first;
                    window[n] = i < 0 ? 0 : samples[static_cast<std::size_t>(i)];
                }
                const Values bands = frame(window);
                patch.insert(patch.end(), bands.begin(), bands.end());
            }
            const Values latest = embedding(normalised(patch));
            memory.insert(memory.end(), latest.begin(), latest.end());
            memory.erase(memory.begin(), memory.begin() + static_cast<std::ptrdiff_t>(latest.size()));
            results.push_back({at, confidences(memory)});
        }
        return results;
    }

private:
    static constexpr double pi = std::numbers::pi;

    static double mel(double frequency) { return 1127 * std::log(1 + frequency / 700); }

    [[nodiscard]] double edge(std::size_t i) const {
        const double low = mel(static_cast<double>(model_.frontEnd.low));
        const double high = mel(static_cast<double>(model_.frontEnd.high));
        return low + (high - low) * static_cast<double>(i) / (model_.frontEnd.mels + 1);
    }

    /// Planes are indexed [channel][time][frequency].
    static Values convolved(const SoundModel::Convolution& layer, const Values& plane, PlaneSize size) {
        const PlaneSize result = outputSize(layer, size);
        Values output;
        for (std::size_t o = 0; o < layer.out; ++o) {
            for (std::size_t t = 0; t < result.times; ++t) {
                for (std::size_t f = 0; f < result.frequencies; ++f) {
                    double sum = static_cast<double>(layer.bias[o]);
                    for (std::size_t i = 0; i < std::size_t{9} * layer.in; ++i) {
                        const std::size_t time =
                            t * layer.strideTime + i / 3 % 3;  // index plus one, because of the padding
                        const std::size_t frequency = f * layer.strideFrequency + i % 3;
                        if (time >= 1 && time <= size.times && frequency >= 1 &&
                            frequency <= size.frequencies) {
                            sum += static_cast<double>(layer.weights[o * 9 * layer.in + i]) *
                                   plane[(i / 9 * size.times + time - 1) * size.frequencies + frequency - 1];
                        }
                    }
                    const double carried = layer.residual ? plane[output.size()] : 0;
                    output.push_back(std::max(0.0, sum + carried));
                }
            }
        }
        return output;
    }

    static Values dense(const SoundModel::Dense& layer, const Values& input) {
        Values output(layer.bias.begin(), layer.bias.end());
        for (std::size_t i = 0; i < layer.weights.size(); ++i) {
            output[i / layer.in] += static_cast<double>(layer.weights[i]) * input[i % layer.in];
        }
        return output;
    }

    static Values rectified(Values values) {
        for (double& value : values) {
            value = std::max(0.0, value);
        }
        return values;
    }

    SoundModel model_;
};

}  // namespace sordin
