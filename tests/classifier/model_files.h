// SPDX-License-Identifier: MIT
// Generated sound models, and the bytes of their files.
#pragma once

#include "classifier/sound_model.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <random>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace sordin {

using Bytes = std::vector<std::byte>;

/// Appends a number in little-endian order.
inline void append(Bytes& bytes, std::uint32_t value, unsigned size = 4) {
    for (unsigned i = 0; i < size; ++i) {
        bytes.push_back(std::byte((value >> (8 * i)) & 0xFFU));
    }
}

inline void append(Bytes& bytes, float value) {
    append(bytes, std::bit_cast<std::uint32_t>(value));
}

/// Appends a float as binary16. It must be exactly representable: infinity, 0 or normal with 11 bits.
inline void appendHalf(Bytes& bytes, float value) {
    const auto bits = std::bit_cast<std::uint32_t>(value);
    const std::uint32_t sign = (bits >> 16U) & 0x8000U;
    const std::uint32_t magnitude = value == 0 ? 0 : ((bits & 0x7FFFFFFFU) >> 13U) - (112U << 10U);
    append(bytes, sign | (std::isfinite(value) ? magnitude : 0x7C00U), 2);
}

inline void append(Bytes& bytes, const std::vector<float>& weights, const std::vector<float>& bias) {
    for (const float weight : weights) {
        appendHalf(bytes, weight);
    }
    for (const float value : bias) {
        append(bytes, value);
    }
}

inline void append(Bytes& bytes, const SoundModel::Dense& layer) {
    append(bytes, layer.in);
    append(bytes, layer.out);
    append(bytes, layer.weights, layer.bias);
}

inline Bytes payloadOf(const SoundModel& model) {
    Bytes bytes;
    const auto write = [&bytes](auto... values) { (append(bytes, values), ...); };
    const auto& f = model.frontEnd;
    write(f.rate, f.window, f.hop, f.transform, f.mels, f.low, f.high, f.floor, f.range, f.scale, f.frames,
          f.pool);
    write(static_cast<std::uint32_t>(model.convolutions.size()));
    for (const auto& layer : model.convolutions) {
        write(layer.in, layer.out, layer.strideTime, layer.strideFrequency, layer.residual ? 1U : 0U);
        append(bytes, layer.weights, layer.bias);
    }
    write(model.sections, model.embedding, model.memory, static_cast<std::uint32_t>(model.dense.size()));
    for (const auto& layer : model.dense) {
        write(layer);
    }
    write(static_cast<std::uint32_t>(model.labels.size()));
    for (const auto& label : model.labels) {
        append(bytes, static_cast<std::uint32_t>(label.identifier.size()), 1);
        for (const char c : label.identifier) {
            bytes.push_back(std::byte(c));
        }
        write(label.gain, label.offset);
    }
    return bytes;
}

/// A bitwise CRC-32.
inline std::uint32_t slowCrc32(std::span<const std::byte> bytes) {
    std::uint32_t crc = ~0U;
    for (const std::byte byte : bytes) {
        crc ^= std::to_integer<std::uint32_t>(byte);
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc & 1U) != 0 ? (crc >> 1U) ^ 0xEDB88320U : crc >> 1U;
        }
    }
    return ~crc;
}

/// A file with this payload.
inline Bytes fileOf(const Bytes& payload, std::string_view magic = "SORDINSM") {
    Bytes bytes;
    for (const char c : magic) {
        bytes.push_back(std::byte(c));
    }
    append(bytes, 1U);
    append(bytes, static_cast<std::uint32_t>(payload.size()));
    append(bytes, slowCrc32(payload));
    bytes.insert(bytes.end(), payload.begin(), payload.end());
    return bytes;
}

inline Bytes fileOf(const SoundModel& model) {
    return fileOf(payloadOf(model));
}

/// `count` weights that are representable as binary16 and keep sums over `inputs` of them bounded.
inline std::vector<float> randomWeights(std::mt19937& random, std::size_t count, std::size_t inputs) {
    const float unit = std::exp2(std::round(std::log2(2 / std::sqrt(static_cast<float>(inputs)))) - 10);
    std::uniform_int_distribution<int> steps(-1024, 1024);
    std::vector<float> weights(count);
    for (float& weight : weights) {
        weight = static_cast<float>(steps(random)) * unit;
    }
    return weights;
}

inline SoundModel::Convolution randomConvolution(std::mt19937& random, std::uint32_t in, std::uint32_t out,
                                                 std::uint32_t strideTime, std::uint32_t strideFrequency,
                                                 bool residual = false) {
    return {in,
            out,
            strideTime,
            strideFrequency,
            residual,
            randomWeights(random, std::size_t{9} * in * out, std::size_t{9} * in),
            randomWeights(random, out, 100)};
}

inline SoundModel::Dense randomDense(std::mt19937& random, std::size_t in, std::uint32_t out) {
    return {static_cast<std::uint32_t>(in), out, randomWeights(random, in * out, in),
            randomWeights(random, out, 100)};
}

/// The number of features that the convolutions pass to the embedding.
inline std::size_t featureCount(const SoundModel& model) {
    PlaneSize size = inputSize(model.frontEnd);
    for (const auto& layer : model.convolutions) {
        size = outputSize(layer, size);
    }
    return 2 * model.sections * model.convolutions.back().out * size.frequencies;
}

/// A small model with every kind of layer: patches of 1.2 s at 4 kHz, three embeddings.
inline SoundModel smallModel(std::mt19937& random) {
    SoundModel model;
    model.frontEnd = {4'000, 100, 40, 128, 13, 60, 1'900, 1e-4F, 6, 2.5F, 119, 2};
    model.convolutions = {randomConvolution(random, 1, 5, 2, 1), randomConvolution(random, 5, 9, 1, 2),
                          randomConvolution(random, 9, 9, 1, 1, true),
                          randomConvolution(random, 9, 12, 3, 2)};
    model.sections = 3;
    model.embedding = randomDense(random, featureCount(model), 7);
    model.memory = 3;
    model.dense = {randomDense(random, 21, 6), randomDense(random, 6, 3)};
    model.labels = {{"speech", 1.5F, 0.25F}, {"music", 0.75F, -0.5F}, {"singing", 2, 0}};
    return model;
}

}  // namespace sordin
