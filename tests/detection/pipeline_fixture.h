// SPDX-License-Identifier: MIT
#pragma once

#include "detection/detection_pipeline.h"
#include "detection/keyword_transcript_scorer.h"
#include "fakes/detection_fakes.h"
#include "support/manual_serial_queue.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

namespace sordin {

/// A pipeline with fakes for its parts, and a manual clock and queue. The test sets the scorer's confidence.
class PipelineTest : public testing::Test {
protected:
    static constexpr std::size_t hopSize = 8000;
    static constexpr AudioFormat mono16k{16'000, 1};

    PipelineTest() {
        pipeline->onTick = [this](const PipelineTick& tick) {
            ticks.push_back(tick);
            log += 't';
        };
        pipeline->onAdStart = [this] { log += 'S'; };
        pipeline->onAdEnd = [this](const AdSummary& summary) {
            ends.push_back(summary);
            log += 'E';
        };
        pipeline->onHop = [this](const auto& hop) {
            hops.push_back(hop);
            log += '.';
        };
    }

    /// A square wave of the given level, or silence.
    static std::vector<float> sound(std::size_t samples, float level = 0.1F) {
        std::vector<float> audio(samples, level);
        for (std::size_t i = 0; i < samples; i += 2) {
            audio[i] = -level;
        }
        return audio;
    }

    void ingest(std::vector<float> samples, AudioFormat format = mono16k) {
        pipeline->ingest(PcmBuffer(format, std::move(samples)));
    }

    /// Plays `count` hops, each in one buffer at its own time, and runs posted work in between.
    void playHops(int count, float level = 0.1F) {
        for (int i = 0; i < count; ++i) {
            clock->advance(0.5);
            ingest(sound(hopSize, level));
            queue->runPending();
        }
    }

    void playHops(int count, float level, float confidence) {
        scorer->confidence = confidence;
        playHops(count, level);
    }

    /// Starts an ad with two strong hops.
    void startAd() {
        playHops(2, 0.1F, 0.9F);
        ASSERT_TRUE(hops.back().inAd);
    }

    void stop() {
        pipeline->stop();
        queue->runPending();
    }

    [[nodiscard]] std::string takeLog() { return std::exchange(log, {}); }

    std::shared_ptr<ManualSerialQueue> queue = std::make_shared<ManualSerialQueue>("sordin.audio");
    std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>(1e9);
    std::shared_ptr<FakeClassifier> classifier = std::make_shared<FakeClassifier>();
    std::shared_ptr<FakeTranscriber> transcriber = std::make_shared<FakeTranscriber>();
    std::shared_ptr<FakeScorer> scorer = std::make_shared<FakeScorer>();

    std::vector<PipelineTick> ticks;
    std::vector<AdSummary> ends;
    std::vector<DetectionPipeline::HopObservation> hops;
    std::string log;  // S ad start, E ad end, t tick, . hop

    std::shared_ptr<DetectionPipeline> pipeline =
        std::make_shared<DetectionPipeline>(DetectionPipeline::Parts{
            queue, clock, classifier, transcriber, std::make_shared<KeywordTranscriptScorer>(), scorer});
};

}  // namespace sordin
