// SPDX-License-Identifier: MIT
// The hops never depend on how the stream is cut into buffers.
#include "detection/heuristic_ad_scorer.h"
#include "detection/pipeline_fixture.h"
#include "random_seed.h"

#include <algorithm>
#include <cmath>
#include <sstream>

namespace sordin {
namespace {

/// A stretch of the stream in one format, samples channel by channel.
struct Segment {
    AudioFormat format;
    std::vector<std::vector<float>> channels;
};

/// Plays one stream through a new pipeline, cut as told. Clock and scores follow the hops, not the buffers.
class StreamRun {
public:
    template <class NextSize>
    static std::string play(const std::vector<Segment>& stream, NextSize&& nextSize) {
        StreamRun run;
        for (const Segment& segment : stream) {
            const std::size_t frames = segment.channels[0].size();
            for (std::size_t at = 0; at < frames;) {
                const std::size_t size = std::min(frames - at, nextSize(segment.format.sampleRate));
                run.ingest(segment, at, size);
                at += size;
            }
        }
        return run.record_.str();
    }

private:
    StreamRun() {
        pipeline_->onHop = [this](const auto& hop) { take(hop); };
        follow(0);
    }

    void ingest(const Segment& segment, std::size_t at, std::size_t size) {
        std::vector<float> samples;
        for (const auto& channel : segment.channels) {
            const auto begin = channel.begin() + static_cast<std::ptrdiff_t>(at);
            samples.insert(samples.end(), begin, begin + static_cast<std::ptrdiff_t>(size));
        }
        pipeline_->ingest(PcmBuffer(segment.format, std::move(samples)));
    }

    void take(const DetectionPipeline::HopObservation& hop) {
        record_ << std::hexfloat << hop.index << ' ' << hop.signals.silent << ' ' << hop.inAd << ' '
                << hop.transcribing << ' ' << hop.verdict.confidence << ' ' << hop.signals.boundary << ' '
                << hop.signals.repetition << ' ' << hop.signals.loudnessRise << ' ' << hop.signals.keyword
                << ' ' << hop.signals.sinceLastAd.value_or(-1) << ' ' << (hop.event ? 'e' : '-');
        if (hop.features) {
            for (const float band : hop.features->bands) {
                record_ << ' ' << band;
            }
        }
        record_ << '\n';
        follow(hop.index + 1);
    }

    /// What the next hop will find.
    void follow(std::int64_t hop) {
        clock_->advance(0.5);
        const bool ad = hop / 20 % 2 == 1;
        classifier_->scores = ad ? SoundClassification{0.9F, 0.8F, 0} : SoundClassification{0.1F, 0.9F, 0};
        transcriber_->transcript = ad ? "visit us" : "";
    }

    std::shared_ptr<ManualClock> clock_ = std::make_shared<ManualClock>(1e9);
    std::shared_ptr<FakeClassifier> classifier_ = std::make_shared<FakeClassifier>();
    std::shared_ptr<FakeTranscriber> transcriber_ = std::make_shared<FakeTranscriber>();
    std::shared_ptr<DetectionPipeline> pipeline_ =
        std::make_shared<DetectionPipeline>(DetectionPipeline::Parts{
            std::make_shared<ManualSerialQueue>("sordin.audio"), clock_, classifier_, transcriber_,
            std::make_shared<KeywordTranscriptScorer>(), std::make_shared<HeuristicAdScorer>()});
    std::ostringstream record_;
};

class StreamMaker {
public:
    explicit StreamMaker(std::mt19937& random) : random_(random) {}

    /// About a minute in formats that change in mid-hop, with quiet and silent stretches.
    std::vector<Segment> stream() {
        std::vector<Segment> result;
        const std::vector<double> rates{16'000, 48'000, 8'000, 44'100, 11'025, 16'000, 48'000, 8'000};
        for (const double rate : rates) {
            const auto channels = static_cast<std::uint32_t>(uniform(1, 2));
            result.push_back(segment({rate, channels}, 3 + 0.001 * uniform(0, 9'000)));
        }
        return result;
    }

    /// From a single frame to 5 s, small sizes as likely as large ones.
    std::size_t cut(double rate) {
        const double most = std::log(5 * rate);
        return static_cast<std::size_t>(std::exp(most * 0.0001 * uniform(0, 10'000)));
    }

private:
    Segment segment(AudioFormat format, double seconds) {
        const auto frames = static_cast<std::size_t>(seconds * format.sampleRate);
        Segment result{format, {}};
        for (std::uint32_t channel = 0; channel < format.channelCount; ++channel) {
            std::vector<float> samples(frames);
            float level = 0;
            for (std::size_t i = 0; i < frames; ++i) {
                if (i % 5'000 == 0) {
                    level = uniform(0, 4) == 0 ? 0.0F : 0.0002F * static_cast<float>(uniform(1, 1'000));
                }
                samples[i] = level * (static_cast<float>(uniform(0, 2'000)) * 0.001F - 1);
            }
            result.channels.push_back(std::move(samples));
        }
        return result;
    }

    int uniform(int low, int high) { return std::uniform_int_distribution(low, high)(random_); }

    std::mt19937& random_;
};

TEST(PipelineCuts, NeverChangeTheResult) {
    auto random = seededRandom();
    StreamMaker maker(random);
    const auto stream = maker.stream();
    const auto inOne = StreamRun::play(stream, [](double) { return std::size_t{1} << 40; });
    EXPECT_GT(std::count(inOne.begin(), inOne.end(), '\n'), 60);
    EXPECT_NE(inOne.find(" e"), std::string::npos) << "the stream should hold an ad";
    for (int round = 0; round < 6; ++round) {
        ASSERT_EQ(StreamRun::play(stream, [&](double rate) { return maker.cut(rate); }), inOne) << round;
    }
    EXPECT_EQ(StreamRun::play({stream[2]}, [](double) { return std::size_t{1}; }),
              StreamRun::play({stream[2]}, [](double) { return std::size_t{40'000}; }));
}

}  // namespace
}  // namespace sordin
