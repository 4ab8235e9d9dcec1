// SPDX-License-Identifier: MIT
#include "allocation_counter.h"
#include "detection/detection_pipeline.h"
#include "detection/heuristic_ad_scorer.h"
#include "detection/keyword_transcript_scorer.h"
#include "fakes/detection_fakes.h"
#include "random_seed.h"
#include "sounds.h"
#include "support/manual_serial_queue.h"

#include <gtest/gtest.h>

namespace sordin {
namespace {

TEST(HopAllocation, ASteadyStreamAllocatesNothing) {
    auto random = seededRandom();
    const auto classifier = std::make_shared<FakeClassifier>();
    classifier->positions.reserve(1000);
    classifier->prepared.reserve(10);
    const auto transcriber = std::make_shared<FakeTranscriber>();
    const auto clock = std::make_shared<ManualClock>(1e9);
    const auto queue = std::make_shared<ManualSerialQueue>("sordin.audio");
    const auto pipeline = std::make_shared<DetectionPipeline>(DetectionPipeline::Parts{
        queue, clock, classifier, transcriber, std::make_shared<KeywordTranscriptScorer>(),
        std::make_shared<HeuristicAdScorer>()});
    std::size_t ticks = 0;
    pipeline->onTick = [&](const PipelineTick& /*tick*/) { ++ticks; };
    std::vector<PcmBuffer> buffers;
    for (int i = 0; i < 60; ++i) {
        // No integer number of these makes a hop.
        buffers.emplace_back(AudioFormat{16'000, 1}, noise(random, 0.1F, 5000));
    }
    const auto play = [&] {
        for (const PcmBuffer& buffer : buffers) {
            clock->advance(0.3125);
            pipeline->ingest(buffer);
        }
    };
    const auto allocationsOf = [&](SoundClassification scores) {
        classifier->scores = scores;
        play();  // reaches a steady state after the ad starts or ends
        const std::size_t before = allocationCount();
        play();
        return allocationCount() - before;
    };
    EXPECT_EQ(allocationsOf({}), 0U);
    EXPECT_EQ(allocationsOf({1, 1, 1}), 0U) << "during an ad that is learned and recognized";
    EXPECT_GT(ticks, 60U);
    EXPECT_GT(transcriber->begins, 0);

    pipeline->stop();
    queue->runPending();
    const std::size_t before = allocationCount();
    pipeline->ingest(buffers[0]);
    EXPECT_EQ(allocationCount() - before, 1U) << "the buffer of a hop, which the stop freed";
}

}  // namespace
}  // namespace sordin
