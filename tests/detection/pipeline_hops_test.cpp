// SPDX-License-Identifier: MIT
// A single hop: its signals and the order of the callbacks.
#include "detection/pipeline_fixture.h"

#include <cmath>
#include <limits>

namespace sordin {
namespace {

using testing::ElementsAre;

class PipelineHopsTest : public PipelineTest {};

TEST_F(PipelineHopsTest, CutsHopsFromChannelZero) {
    ingest(sound(6000));
    EXPECT_EQ(hops.size(), 0U);
    ingest(sound(2000 + 2 * hopSize));
    ASSERT_EQ(hops.size(), 3U);
    EXPECT_EQ(hops[2].index, 2);

    // Stereo with a silent left channel counts as silence, because only channel 0 is used.
    auto stereo = std::vector<float>(hopSize);
    const auto right = sound(hopSize);
    stereo.insert(stereo.end(), right.begin(), right.end());
    ingest(stereo, {16'000, 2});
    ASSERT_EQ(hops.size(), 4U);
    EXPECT_TRUE(hops[3].signals.silent);
}

TEST_F(PipelineHopsTest, FeedsTheClassifierAllButSilenceWithItsPlaceInTheStream) {
    ingest(sound(1000));
    ingest(sound(500, 0.0001F));  // exactly at the floor: silence
    ingest(std::vector<float>());
    ingest(std::vector<float>(100), {16'000, 0});
    ingest(sound(700));
    ingest(sound(100), {48'000, 1});
    classifier->preparable = false;  // has no effect here
    ingest(sound(200), {48'000, 2});
    ingest(sound(50), {48'000, 2});
    EXPECT_THAT(classifier->positions, ElementsAre(0, 1500, 2200, 2300, 2400));
    EXPECT_THAT(classifier->prepared, ElementsAre(mono16k, AudioFormat{48'000, 1}, AudioFormat{48'000, 2}));
}

TEST_F(PipelineHopsTest, BoundaryComesFromJumpsOfTheScores) {
    const auto boundaryAt = [&](SoundClassification scores) {
        classifier->scores = scores;
        playHops(1);
        return hops.back().signals.boundary;
    };
    EXPECT_FLOAT_EQ(boundaryAt({0.25F, 0.5F, 0}), 0.8F * 0.75F);
    EXPECT_FLOAT_EQ(boundaryAt({0.25F, 0.5F, 1}), 0) << "jumps of the jingle score do not count";
    EXPECT_FLOAT_EQ(boundaryAt({0.5F, 0.25F, 1}), 0.8F * 0.5F) << "a fall counts like a rise";
    EXPECT_FLOAT_EQ(boundaryAt({0, 0.25F, 1}), 0.8F * 0.5F);
    playHops(1, 0);  // silent hops are not compared
    EXPECT_FLOAT_EQ(boundaryAt({0, 0.25F, 0}), 0);
    EXPECT_FLOAT_EQ(boundaryAt({1, 1, 0}), 1) << "limited to 1";
    EXPECT_FLOAT_EQ(hops.back().signals.music, 1);
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_FLOAT_EQ(boundaryAt({nan, nan, nan}), 0);
    EXPECT_FLOAT_EQ(boundaryAt({0, 0, 0}), 0);
}

TEST_F(PipelineHopsTest, BoundaryComesFromTheSpectrumToo) {
    for (int hop = 0; hop < 12; ++hop) {
        classifier->scores.music = hop < 11 ? 0 : 0.25F;  // a jump of 0.2, too small to count
        playHops(1, hop < 6 ? 0.001F : 0.1F);  // bands 0 to 6 of the square wave stay at their floor
    }
    // Band 7 moves by 40 dB, which is a mean shift of 5 dB and a score of (5 - 2) / 8.
    EXPECT_NEAR(hops[11].signals.boundary, 0.375, 0.01);
    EXPECT_EQ(hops[10].signals.boundary, 0);
    stop();
    classifier->scores.music = 0.25F;
    for (int hop = 0; hop < 11; ++hop) {
        playHops(1, hop < 6 ? 0.001F : 0.1F);
        EXPECT_EQ(hops.back().signals.boundary, 0) << "a stop clears the earlier spectrum";
    }
}

TEST_F(PipelineHopsTest, LoudnessIsMeasuredAgainstASlowAverage) {
    double average = -20;
    for (const float level : {0.1F, 0.2F, 0.2F, 0.05F, 0.1F}) {
        playHops(1, level);
        const double db = 20 * std::log10(static_cast<double>(level));
        EXPECT_NEAR(hops.back().features->db, db, 1e-3);
        EXPECT_NEAR(hops.back().signals.loudnessRise, db - average, 1e-3);
        average = 0.99 * average + 0.01 * db;
    }
    playHops(3, 0);
    playHops(1, 0.1F);
    EXPECT_NEAR(hops.back().signals.loudnessRise, -20 - average, 1e-3)
        << "silence does not change the average";
    ingest(std::vector<float>(hopSize, std::numeric_limits<float>::quiet_NaN()));
    EXPECT_TRUE(hops.back().signals.silent) << "NaN samples count as silence";
    stop();
    playHops(1, 0.5F);
    EXPECT_EQ(hops.back().signals.loudnessRise, 0) << "a stop clears the average";
}

TEST_F(PipelineHopsTest, ASilentHopCarriesNothingButTheTimeSinceTheLastAd) {
    classifier->scores = {0.9F, 0.9F, 0.9F};
    playHops(1, 0);
    EXPECT_FALSE(scorer->last.sinceLastAd);
    startAd();
    playHops(6, 0.1F, 0);
    ASSERT_THAT(ends, testing::SizeIs(1));
    playHops(4, 0);
    const DetectionSignals& last = scorer->last;
    EXPECT_TRUE(last.silent);
    EXPECT_EQ(last.sinceLastAd, 2);
    EXPECT_EQ(last.music + last.speech + last.jingle + last.boundary + last.repetition + last.loudnessRise +
                  last.keyword,
              0);
    EXPECT_FALSE(last.keywordActive);
    EXPECT_FALSE(hops.back().features);
    EXPECT_TRUE(ticks.back().silent);
    EXPECT_EQ(ticks.back().music, 0);
}

TEST_F(PipelineHopsTest, LevelsAtTheFloorAreSound) {
    playHops(1, 0.000099F);
    EXPECT_TRUE(hops.back().signals.silent);
    playHops(1, 0.0001001F);
    EXPECT_FALSE(hops.back().signals.silent);
}

TEST_F(PipelineHopsTest, TicksOnEverySecondHopAndOnEvents) {
    scorer->contributions.append({"Audio", 0.5F});
    classifier->scores = {0.25F, 0.75F, 0};
    playHops(2, 0.1F, 0.3F);
    transcriber->transcript = "hello";  // for the session that has just started
    playHops(2, 0.1F, 0.3F);
    EXPECT_EQ(takeLog(), ".t..t.");
    EXPECT_EQ(ticks.back().confidence, 0.3F);
    EXPECT_EQ(ticks.back().threshold, 0.575F);
    EXPECT_EQ(ticks.back().music, 0.25F);
    EXPECT_EQ(ticks.back().speech, 0.75F);
    EXPECT_EQ(ticks.back().transcript, "hello");
    EXPECT_TRUE(ticks.back().transcribing);
    EXPECT_EQ(ticks.back().contributions.size(), 1U);
    EXPECT_FALSE(ticks.back().inAd);
    playHops(3, 0.1F, 0.6F);
    EXPECT_EQ(takeLog(), ".t.St.") << "the start comes before its tick";
    EXPECT_TRUE(ticks.back().inAd);
    playHops(6, 0.1F, 0.2F);
    EXPECT_EQ(takeLog(), "t..t..t.Et.");
    EXPECT_EQ(ends.back().peakConfidence, 0.6F);
    EXPECT_THAT(ends.back().reasons, ElementsAre("Audio"));
    EXPECT_FALSE(ticks.back().inAd);
}

TEST_F(PipelineHopsTest, TakesTheSettingsHopByHop) {
    pipeline->configure(0.3F, true);
    playHops(3, 0.1F, 0.35F);
    EXPECT_TRUE(hops.back().inAd);
    EXPECT_EQ(hops.back().threshold, 0.3F);
    EXPECT_TRUE(hops.back().signals.keywordActive);
    pipeline->configure(0.8F, false);
    playHops(6, 0.1F, 0.6F);
    EXPECT_FALSE(hops.back().inAd);
    EXPECT_FALSE(hops.back().signals.keywordActive);
    pipeline->configure(0.8F, true);
    transcriber->usable = false;
    playHops(1);
    EXPECT_FALSE(hops.back().signals.keywordActive);

    pipeline->configure(0.575F, true);
    startAd();
    DetectorRules rules;
    rules.weights.audio = 0.9F;
    rules.holdSeconds = 1;
    pipeline->configure(0.575F, true, rules);
    log.clear();
    playHops(2, 0.1F, 0.1F);
    EXPECT_THAT(takeLog(), testing::HasSubstr("E")) << "the new rules end the ad in progress";
    EXPECT_EQ(scorer->rules.weights.audio, 0.9F);
}

}  // namespace
}  // namespace sordin
