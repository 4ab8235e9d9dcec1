// SPDX-License-Identifier: MIT
#include "classifier/model_files.h"
#include "classifier/slow_sound_model.h"
#include "classifier/sound_network.h"
#include "random_seed.h"
#include "sounds.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace sordin {
namespace {

/// A model of random shape, small enough to be fast.
SoundModel arbitraryModel(std::mt19937& random) {
    const auto upTo = [&random](std::uint32_t most) {
        return std::uniform_int_distribution<std::uint32_t>(1, most)(random);
    };
    SoundModel model;
    model.frontEnd = {4'000, 100, 40, 128, upTo(20), 60, 1'900, 1e-4F, 6, 2.5F, upTo(40), 1};
    model.frontEnd.pool = upTo(std::min(3U, model.frontEnd.frames));
    PlaneSize size = inputSize(model.frontEnd);
    std::uint32_t channels = 1;
    for (auto layers = upTo(4); layers > 0; --layers) {
        const bool residual = upTo(3) == 1;
        const std::uint32_t out = residual ? channels : upTo(3) == 1 ? 1 : upTo(20);
        model.convolutions.push_back(randomConvolution(random, channels, out, residual ? 1 : upTo(4),
                                                       residual ? 1 : upTo(4), residual));
        size = outputSize(model.convolutions.back(), size);
        channels = out;
    }
    model.sections = upTo(std::min(4U, static_cast<std::uint32_t>(size.times)));
    model.embedding = randomDense(random, featureCount(model), upTo(20));
    model.memory = upTo(4);
    std::uint32_t values = model.memory * model.embedding.out;
    for (auto layers = upTo(3); layers > 0; --layers) {
        model.dense.push_back(randomDense(random, values, upTo(20)));
        values = model.dense.back().out;
    }
    for (std::uint32_t i = 0; i < values; ++i) {
        model.labels.push_back({"label", 1.0F + static_cast<float>(i), -0.25F * static_cast<float>(i)});
    }
    return model;
}

TEST(SoundNetwork, MatchesThePlainSumsWhateverItsShape) {
    auto random = seededRandom();
    for (int round = 0; round < 200; ++round) {
        const SoundModel model = arbitraryModel(random);
        const SlowSoundModel slow(model);
        SoundNetwork network(model);
        std::vector<float> memory(network.memorySize());
        SlowSoundModel::Values expectedMemory;
        std::vector<double> confidences(model.labels.size());
        const PlaneSize size = inputSize(model.frontEnd);
        for (std::size_t begin = 0; begin < memory.size(); begin += network.embeddingSize()) {
            const auto patch = noise(random, 1, size.times * size.frequencies);
            network.embed(patch, std::span(memory).subspan(begin, network.embeddingSize()));
            const auto embedding = slow.embedding({patch.begin(), patch.end()});
            expectedMemory.insert(expectedMemory.end(), embedding.begin(), embedding.end());
        }
        ASSERT_EQ(expectedMemory.size(), memory.size());
        for (std::size_t i = 0; i < memory.size(); ++i) {
            ASSERT_NEAR(memory[i], expectedMemory[i], 1e-4 * (1 + expectedMemory[i])) << "round " << round;
        }
        network.confidences(memory, confidences);
        const auto expected = slow.confidences(expectedMemory);
        for (std::size_t i = 0; i < confidences.size(); ++i) {
            ASSERT_NEAR(confidences[i], expected[i], 1e-4) << "round " << round;
        }
    }
}

// Large weights can make sums overflow, and infinities of both signs add up to NaN.
TEST(SoundNetwork, IsNeverSureOfWhatIsNoNumber) {
    auto random = seededRandom();
    SoundModel model = smallModel(random);
    for (auto& layer : model.convolutions) {
        for (float& weight : layer.weights) {
            weight *= 1e30F;
        }
    }
    model.dense.erase(model.dense.begin());
    model.dense[0] = randomDense(random, 21, 3);
    SoundNetwork network(model);
    std::vector<float> embedding(network.embeddingSize());
    const PlaneSize size = inputSize(model.frontEnd);
    network.embed(std::vector<float>(size.times * size.frequencies, 1), embedding);
    for (const float value : embedding) {
        EXPECT_GE(value, 0);
    }
    std::vector<double> confidences(3, -1);
    network.confidences(std::vector<float>(21, std::numeric_limits<float>::infinity()), confidences);
    EXPECT_EQ(confidences, std::vector<double>(3, 0));
}

}  // namespace
}  // namespace sordin
