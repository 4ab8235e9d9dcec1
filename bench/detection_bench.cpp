// SPDX-License-Identifier: MIT
// CPU time of the detector's parts. Half a second of audio is one hop.
#include "allocation_counter.h"
#include "detection/detection_pipeline.h"
#include "detection/heuristic_ad_scorer.h"
#include "detection/keyword_transcript_scorer.h"
#include "fakes/detection_fakes.h"
#include "support/manual_serial_queue.h"

#include <benchmark/benchmark.h>

#include <array>
#include <cmath>
#include <memory>
#include <numbers>
#include <random>
#include <vector>

namespace sordin {
namespace {

constexpr double rate = 16'000;
constexpr std::size_t hopSize = 8'000;

/// Noise with a changing level, so that the bands change and fingerprints exist.
std::vector<float> movingNoise(std::size_t samples) {
    std::mt19937 random(1);
    std::normal_distribution<float> noise(0, 0.1F);
    std::vector<float> audio(samples);
    for (std::size_t i = 0; i < samples; ++i) {
        const double swell = 1.2 + std::sin(2 * std::numbers::pi * static_cast<double>(i) / (2.7 * rate));
        audio[i] = noise(random) * static_cast<float>(swell);
    }
    return audio;
}

Bands randomBands(std::mt19937& random) {
    std::uniform_real_distribution<float> level(-60, -10);
    Bands bands;
    for (float& band : bands) {
        band = level(random);
    }
    return bands;
}

/// Always reports speech over music, so that an ad is always in progress and learned.
class AlwaysAd final : public SoundClassifying {
public:
    bool prepare(const AudioFormat&) override { return true; }
    void analyze(const PcmBuffer&, std::int64_t) override {}
    [[nodiscard]] SoundClassification current() const override { return {0.9F, 0.9F, 0}; }
    void reset() override {}
};

void featureExtraction(benchmark::State& state) {
    const auto hop = movingNoise(hopSize);
    FeatureExtractor extractor;
    for (auto _ : state) {
        benchmark::DoNotOptimize(extractor.extract(hop));
    }
}
BENCHMARK(featureExtraction);

void contextChange(benchmark::State& state) {
    std::mt19937 random(1);
    const Bands bands = randomBands(random);
    ContextChangeDetector change;
    for (auto _ : state) {
        benchmark::DoNotOptimize(change.update(bands));
    }
}
BENCHMARK(contextChange);

void repetition(benchmark::State& state) {
    std::mt19937 random(1);
    RepetitionIndex index;
    for (int i = 0; i < 8; ++i) {
        benchmark::DoNotOptimize(index.push(randomBands(random)));
    }
    for (int i = 0; i < state.range(0); ++i) {
        benchmark::DoNotOptimize(index.push(randomBands(random)));
        index.learnCurrent();
    }
    const Bands bands = randomBands(random);
    const Bands others = randomBands(random);
    bool flip = false;
    for (auto _ : state) {
        flip = !flip;
        benchmark::DoNotOptimize(index.push(flip ? bands : others));
    }
}
BENCHMARK(repetition)->Arg(0)->Arg(200);

void scorer(benchmark::State& state) {
    HeuristicAdScorer scorer;
    const DetectionSignals signals{0.9F, 0.8F, 0.1F, 0.5F, 0.3F, 4, 0.6F, true, 30.0, false};
    for (auto _ : state) {
        benchmark::DoNotOptimize(scorer.update(signals));
    }
}
BENCHMARK(scorer);

void keywords(benchmark::State& state) {
    const KeywordTranscriptScorer scorer;
    const std::string transcript =
        "so if you want to know what all of this is about then go and have a look at the new "
        "season and use code garden for ten percent off your first order";
    for (auto _ : state) {
        benchmark::DoNotOptimize(scorer.score(transcript));
    }
}
BENCHMARK(keywords);

/// The complete cost of a hop during an ad, with 200 fingerprints, from a capture's buffers of 20 ms.
void wholeHop(benchmark::State& state) {
    constexpr std::size_t pieces = 25;
    constexpr std::size_t hops = 64;
    const auto clock = std::make_shared<ManualClock>(1e9);
    const auto transcriber = std::make_shared<FakeTranscriber>();
    transcriber->usable = false;
    const auto pipeline = std::make_shared<DetectionPipeline>(DetectionPipeline::Parts{
        std::make_shared<ManualSerialQueue>("sordin.audio"), clock, std::make_shared<AlwaysAd>(), transcriber,
        std::make_shared<KeywordTranscriptScorer>(), std::make_shared<HeuristicAdScorer>()});
    const auto audio = movingNoise(hops * hopSize);
    std::vector<PcmBuffer> buffers;
    constexpr std::size_t piece = hopSize / pieces;
    for (std::size_t at = 0; at < audio.size(); at += piece) {
        const auto begin = audio.begin() + static_cast<std::ptrdiff_t>(at);
        buffers.emplace_back(AudioFormat{rate, 1}, std::vector<float>(begin, begin + piece));
    }
    std::size_t next = 0;
    const auto ingestHop = [&] {
        clock->advance(0.5);
        for (std::size_t i = 0; i < pieces; ++i) {
            pipeline->ingest(buffers[next]);
            next = (next + 1) % buffers.size();
        }
    };
    for (int i = 0; i < 8 * 220; ++i) {
        ingestHop();
    }
    const std::size_t allocationsBefore = allocationCount();
    for (auto _ : state) {
        ingestHop();
    }
    const auto made = static_cast<double>(allocationCount() - allocationsBefore);
    state.counters["allocations/hop"] = made / static_cast<double>(state.iterations());
    state.counters["x real time"] =
        benchmark::Counter(0.5 * static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}
BENCHMARK(wholeHop);

}  // namespace
}  // namespace sordin
