// SPDX-License-Identifier: MIT
// CPU time of the shipped sound model.
#include "allocation_counter.h"
#include "classifier/mel_front_end.h"
#include "classifier/network_sound_tagger.h"
#include "classifier/sound_model_file.h"
#include "classifier/sound_network.h"

#include <benchmark/benchmark.h>

#include <random>
#include <vector>

namespace sordin {
namespace {

std::vector<float> noise(std::size_t samples) {
    std::mt19937 random(1);
    std::normal_distribution<float> value(0, 0.1F);
    std::vector<float> audio(samples);
    for (float& sample : audio) {
        sample = value(random);
    }
    return audio;
}

/// One frame of mel bands. There are a hundred per second.
void melFrame(benchmark::State& state) {
    const SoundModel model = loadSoundModel(SORDIN_SOUND_MODEL);
    MelFrontEnd frontEnd(model.frontEnd);
    const auto samples = noise(model.frontEnd.window);
    std::vector<float> bands(model.frontEnd.mels);
    for (auto _ : state) {
        frontEnd.frame(samples, bands);
        benchmark::DoNotOptimize(bands.data());
    }
}
BENCHMARK(melFrame);

/// One patch through the network; happens twice a second.
void embedding(benchmark::State& state) {
    const SoundModel model = loadSoundModel(SORDIN_SOUND_MODEL);
    SoundNetwork network(model);
    const PlaneSize size = inputSize(model.frontEnd);
    const auto patch = noise(size.times * size.frequencies);
    std::vector<float> values(network.embeddingSize());
    for (auto _ : state) {
        network.embed(patch, values);
        benchmark::DoNotOptimize(values.data());
    }
}
BENCHMARK(embedding)->Unit(benchmark::kMicrosecond);

/// The complete processing of a second of audio from buffers of 20 ms. Argument: sample rate in Hz.
void taggedSecond(benchmark::State& state) {
    constexpr std::size_t pieces = 50;
    const AudioFormat format{static_cast<double>(state.range(0)), 1};
    NetworkSoundTagger tagger(loadSoundModel(SORDIN_SOUND_MODEL));
    benchmark::DoNotOptimize(tagger.prepare(format));
    const PcmBuffer buffer(format, noise(static_cast<std::size_t>(state.range(0)) / pieces));
    std::int64_t position = 0;
    const auto hearSecond = [&] {
        for (std::size_t i = 0; i < pieces; ++i) {
            tagger.analyze(buffer, position);
            position += static_cast<std::int64_t>(buffer.frameLength());
        }
    };
    hearSecond();
    const std::size_t allocationsBefore = allocationCount();
    for (auto _ : state) {
        hearSecond();
    }
    const auto made = static_cast<double>(allocationCount() - allocationsBefore);
    state.counters["allocations/s"] = made / static_cast<double>(state.iterations());
    state.counters["x real time"] =
        benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}
BENCHMARK(taggedSecond)->Arg(16'000)->Arg(48'000)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace sordin
