// SPDX-License-Identifier: MIT
// Ads over time: learning, watchdog, stop, forgetting, destruction.
#include "detection/pipeline_fixture.h"
#include "random_seed.h"
#include "support/asio_serial_queue.h"

#include <chrono>
#include <future>
#include <thread>

namespace sordin {
namespace {

using testing::SizeIs;

class PipelineLifecycleTest : public PipelineTest {
protected:
    /// A programme that never repeats: noise whose color and level change with every hop.
    std::vector<std::vector<float>> variedHops(std::size_t count) {
        std::normal_distribution<float> noise;
        std::uniform_real_distribution<float> unit(0, 1);
        std::vector<std::vector<float>> result;
        for (std::size_t i = 0; i < count; ++i) {
            const float smoothing = 0.98F * unit(random_);
            const float level = 0.01F + 0.1F * unit(random_);
            float state = 0;
            std::vector<float> hop(hopSize);
            for (float& sample : hop) {
                state = smoothing * state + (1 - smoothing) * noise(random_);
                sample = level * state;
            }
            result.push_back(std::move(hop));
        }
        return result;
    }

    void play(const std::vector<float>& hop) {
        clock->advance(0.5);
        ingest(hop);
    }

private:
    std::mt19937 random_ = seededRandom();
};

TEST_F(PipelineLifecycleTest, LearnsAnAdEveryEightSoundingHopsAndKnowsItAgain) {
    const auto ad = variedHops(18);  // 9 s
    startAd();
    std::size_t sounding = 0;
    for (const auto& hop : ad) {
        play(hop);
        EXPECT_LT(hops.back().signals.repetition, 0.9F);
        if (++sounding == 5) {
            playHops(3, 0);  // silent hops do not count
        }
    }
    playHops(6, 0.1F, 0);
    ASSERT_THAT(ends, SizeIs(1));
    stop();  // keeps the fingerprints, drops the recent hops
    std::vector<std::size_t> matches;
    for (std::size_t i = 0; i < ad.size(); ++i) {
        play(ad[i]);
        if (hops.back().signals.repetition > 0.99F) {
            matches.push_back(i + 1);
        }
    }
    EXPECT_THAT(matches, testing::ElementsAre(8, 16));
    stop();
    for (std::size_t i = 0; i < 8; ++i) {
        if (i == 4) {
            stop();
        }
        play(ad[i]);
    }
    EXPECT_EQ(hops.back().signals.repetition, 0) << "a stop clears the recent hops";

    pipeline->forgetLearnedAds();
    queue->runPending();
    for (const auto& hop : ad) {
        play(hop);
        EXPECT_EQ(hops.back().signals.repetition, 0);
    }
}

TEST_F(PipelineLifecycleTest, ForgetsWhatItLearnedOfAnAdThatWasNone) {
    const auto ad = variedHops(8);
    const auto song = variedHops(24);
    const auto playInAd = [&](const auto& sound, std::size_t disownedAt) {
        startAd();
        for (std::size_t i = 0; i < sound.size(); ++i) {
            if (i == disownedAt) {
                pipeline->disownAd();
                queue->runPending();
            }
            play(sound[i]);
        }
        playHops(6, 0, 0);
    };
    const auto isKnown = [&](const auto& sound) {
        stop();
        float best = 0;
        for (const auto& hop : sound) {
            play(hop);
            best = std::max(best, hops.back().signals.repetition);
        }
        return best > 0.99F;
    };
    playInAd(ad, ad.size());
    playInAd(song, 10);  // between the first fingerprint and the second
    EXPECT_FALSE(isKnown(song));
    EXPECT_TRUE(isKnown(ad)) << "fingerprints of other ads stay";
    playInAd(song, song.size());
    EXPECT_TRUE(isKnown(song)) << "the next ad is learned";
    pipeline->disownAd();  // a late user, after the end of the ad
    queue->runPending();
    EXPECT_FALSE(isKnown(song));
    EXPECT_TRUE(isKnown(ad));
}

TEST_F(PipelineLifecycleTest, CountsTheHopsOfEachAdAnew) {
    const auto ad = variedHops(7);
    for (int round = 0; round < 3; ++round) {
        startAd();
        for (const auto& hop : ad) {
            play(hop);
        }
        playHops(6, 0, 0);  // ends in silence, before the eighth sounding hop
    }
    ASSERT_THAT(ends, SizeIs(3));
    // A fingerprint that was learned too early would match at the same position of the next ad.
    for (const auto& hop : hops) {
        EXPECT_EQ(hop.signals.repetition, 0) << hop.index;
    }
}

TEST_F(PipelineLifecycleTest, WatchdogEndsAnAdWhoseAudioStopped) {
    const auto watch = [&](double secondsLater) {
        clock->advance(secondsLater);
        pipeline->watchdog();
        queue->runPending();
        return ends.size();
    };
    EXPECT_EQ(watch(100), 0U) << "there is no ad to end";
    scorer->contributions.append({"Audio", 0.5F});
    startAd();
    EXPECT_EQ(watch(3), 0U) << "exactly three seconds is not enough";
    ingest({});  // an empty buffer does not count as audio
    EXPECT_EQ(watch(0.25), 1U);
    EXPECT_EQ(ends[0].peakConfidence, 0.9F);
    EXPECT_THAT(ends[0].reasons, testing::ElementsAre("Audio"));
    EXPECT_EQ(watch(10), 1U);
    playHops(1, 0.1F, 0.9F);
    EXPECT_EQ(scorer->last.sinceLastAd, 10.5) << "the end by the watchdog counts as the last ad";
    EXPECT_FALSE(hops.back().inAd) << "the count of strong hops restarts";

    startAd();
    clock->advance(2.9);
    ingest(sound(10));
    EXPECT_EQ(watch(2.9), 1U);
    pipeline->onAdEnd = {};
    EXPECT_EQ(watch(4), 1U) << "no callback is required";
}

TEST_F(PipelineLifecycleTest, StopEndsTheAdOnceAndCleansUp) {
    startAd();
    playHops(6, 0.1F, 0);
    ASSERT_THAT(ends, SizeIs(1));
    playHops(20, 0.1F, 0);
    startAd();
    transcriber->running = true;
    const SoundClassification before = classifier->scores = {0.5F, 0.25F, 0};
    playHops(1, 0.1F, 0.9F);
    ingest(sound(5000));
    pipeline->stop();
    EXPECT_THAT(ends, SizeIs(1)) << "the stop is queued";
    queue->runPending();
    ASSERT_THAT(ends, SizeIs(2));
    EXPECT_EQ(ends[1].peakConfidence, 0.9F);
    EXPECT_FALSE(transcriber->running);
    EXPECT_EQ(classifier->resets, 1);
    EXPECT_EQ(scorer->resets, 1);

    const auto hopsBefore = static_cast<std::int64_t>(hops.size());
    const std::int64_t framesBefore = classifier->positions.back() + 5000;
    hops.clear();
    ticks.clear();
    ingest(std::vector<float>(100));
    EXPECT_EQ(classifier->hopsFrom, framesBefore) << "although the hop begins with silence";
    ingest(sound(2900));
    EXPECT_EQ(classifier->positions.back(), framesBefore + 100) << "the position continues";
    EXPECT_THAT(hops, SizeIs(0)) << "the stop drops earlier samples";
    EXPECT_THAT(classifier->prepared, SizeIs(2)) << "the first buffer prepares the classifier again";
    classifier->scores = before;
    ingest(sound(5000));
    ASSERT_THAT(hops, SizeIs(1));
    EXPECT_EQ(hops[0].index, hopsBefore);
    EXPECT_EQ(hops[0].signals.boundary, 0) << "the scores from before the stop are still compared";
    EXPECT_EQ(scorer->last.sinceLastAd, 0.5 * 23) << "an ad that a stop ended does not count as the last ad";
    stop();
    stop();
    EXPECT_THAT(ends, SizeIs(2));
}

TEST_F(PipelineLifecycleTest, MayGoAwayWithWorkWaitingAndFromItsOwnQueue) {
    pipeline->stop();
    pipeline->watchdog();
    pipeline->forgetLearnedAds();
    pipeline.reset();
    queue->runPending();
    EXPECT_EQ(classifier->resets, 0);

    // The owner releases the pipeline while the pipeline's own work runs. The pipeline, its queue and
    // everything they hold are destroyed there.
    struct WaitingTranscriber final : FakeTranscriber {
        std::promise<void> entered;
        std::promise<void> proceed;
        void end() override {
            entered.set_value();
            proceed.get_future().wait();
        }
    };
    const auto waiting = std::make_shared<WaitingTranscriber>();
    auto real = std::make_shared<DetectionPipeline>(
        DetectionPipeline::Parts{std::make_shared<AsioSerialQueue>("sordin.audio"), clock, classifier,
                                 waiting, std::make_shared<KeywordTranscriptScorer>(), scorer});
    real->stop();
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    ASSERT_EQ(waiting->entered.get_future().wait_until(deadline), std::future_status::ready);
    real.reset();
    waiting->proceed.set_value();
    while (waiting.use_count() > 1) {
        ASSERT_LT(std::chrono::steady_clock::now(), deadline);
        std::this_thread::yield();
    }
}

}  // namespace
}  // namespace sordin
