// SPDX-License-Identifier: MIT
#pragma once

#include "detection/detection_pipeline.h"
#include "detection/heuristic_ad_scorer.h"
#include "detection/keyword_transcript_scorer.h"
#include "fakes/detection_fakes.h"
#include "support/manual_serial_queue.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace sordin {

/// A part of the stream in one format, samples channel by channel.
struct Segment {
    AudioFormat format;
    std::vector<std::vector<float>> channels;
    bool stopAfter = false;
    bool forgetAfter = false;
};

/// The first line in which two records differ, from both; empty if they are equal.
inline std::string firstDifference(const std::string& a, const std::string& b) {
    std::istringstream linesOfA(a);
    std::istringstream linesOfB(b);
    std::string lineOfA;
    std::string lineOfB;
    do {
        lineOfA = lineOfB = "(end)";
        std::getline(linesOfA, lineOfA);
        std::getline(linesOfB, lineOfB);
        if (lineOfA != lineOfB) {
            return lineOfA + "\n" + lineOfB;
        }
    } while (linesOfA || linesOfB);
    return {};
}

/// Plays one stream through a new pipeline in buffers of the given sizes. Clock and scores follow the hops.
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
            run.finish(segment);
        }
        return run.record_.str();
    }

private:
    StreamRun() {
        pipeline_->onHop = [this](const auto& hop) { take(hop); };
        follow(0);
    }

    void finish(const Segment& segment) {
        if (segment.forgetAfter) {
            pipeline_->forgetLearnedAds();
        }
        if (segment.stopAfter) {
            pipeline_->stop();
        }
        queue_->runPending();
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

    /// Sets the clock and the scores for the next hop.
    void follow(std::int64_t hop) {
        clock_->advance(0.5);
        const bool ad = hop / 20 % 2 == 1;
        classifier_->scores = ad ? SoundClassification{0.9F, 0.8F, 0} : SoundClassification{0.1F, 0.9F, 0};
        transcriber_->transcript = ad ? "visit us" : "";
    }

    std::shared_ptr<ManualClock> clock_ = std::make_shared<ManualClock>(1e9);
    std::shared_ptr<ManualSerialQueue> queue_ = std::make_shared<ManualSerialQueue>("sordin.audio");
    std::shared_ptr<FakeClassifier> classifier_ = std::make_shared<FakeClassifier>();
    std::shared_ptr<FakeTranscriber> transcriber_ = std::make_shared<FakeTranscriber>();
    std::shared_ptr<DetectionPipeline> pipeline_ =
        std::make_shared<DetectionPipeline>(DetectionPipeline::Parts{
            queue_, clock_, classifier_, transcriber_, std::make_shared<KeywordTranscriptScorer>(),
            std::make_shared<HeuristicAdScorer>()});
    std::ostringstream record_;
};

}  // namespace sordin
