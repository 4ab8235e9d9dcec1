// SPDX-License-Identifier: MIT
#include "engine_fixture.h"

#include <limits>

namespace sordin {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class EngineAdsTest : public EngineTest {
protected:
    AdHistory saved() { return AdHistoryFile(folder / "Sordin/history.json", historyQueue).load(); }
};

TEST_F(EngineAdsTest, AnAdIsFadedAndRemembered) {
    listen();
    scorer->contributions.append({"Keywords", 0.3F});
    const auto before = wallClock;
    hearAdBegin();
    EXPECT_EQ(engine->status(), Kind::mutingAd);
    EXPECT_EQ(engine->currentApp(), "Radio");
    EXPECT_EQ(engine->menuIcon(), "speaker.slash.fill");
    pass(0.5);
    EXPECT_EQ(volumeNow(), 0);
    EXPECT_TRUE(defaults->number("pendingRestoreVolume"));
    wallClock -= 3600;  // the user sets the clock back
    hearAdEnd();
    pass(1);
    EXPECT_EQ(engine->status(), Kind::listening);
    EXPECT_EQ(volumeNow(), fullVolume);
    EXPECT_FALSE(defaults->number("pendingRestoreVolume"));
    ASSERT_THAT(engine->history(), SizeIs(1));
    const AdEvent event = engine->history()[0];
    EXPECT_FALSE(event.id.isNull());
    EXPECT_NEAR(event.start, before + 1, 0.01);
    EXPECT_GT(event.duration, 1);
    EXPECT_LT(event.duration, 30);
    EXPECT_EQ(event.app, "Radio");
    EXPECT_EQ(event.peakConfidence, static_cast<double>(0.9F));
    EXPECT_THAT(event.reasons, ElementsAre("Keywords"));
    EXPECT_EQ(event.kind, AdEvent::Kind::muted);
    EXPECT_EQ(saved(), engine->history());
}

TEST_F(EngineAdsTest, TheFadeDoesNotWaitForTheMainThread) {
    listen();
    scorer->confidence = 0.9F;
    for (int i = 0; i < 2; ++i) {
        clock->advance(0.5);
        pipeline->ingest(PcmBuffer({16'000, 1}, std::vector<float>(8000, 0.1F)));
    }
    volumeQueue->advance(std::chrono::milliseconds(200));
    EXPECT_EQ(volumeNow(), 0);
    EXPECT_FALSE(engine->adActive());
}

TEST_F(EngineAdsTest, TestModeWatchesOnly) {
    listen();
    engine->setTestMode(true);
    hearAdBegin();
    EXPECT_EQ(engine->status(), Kind::mutingAd);
    engine->setTestMode(false);  // from the next ad on
    pass(1);
    EXPECT_EQ(volumeNow(), fullVolume);
    directory.applications.clear();
    hearAdEnd();
    ASSERT_THAT(engine->history(), SizeIs(1));
    EXPECT_EQ(engine->history()[0].kind, AdEvent::Kind::testOnly);
}

TEST_F(EngineAdsTest, SwitchingOffInAnAdGivesTheVolumeBackSmoothly) {
    listen();
    hearAdBegin();
    pass(1);
    engine->setIsEnabled(false);
    EXPECT_FALSE(engine->adActive());
    pass(0.3);
    EXPECT_GT(volumeNow(), 0);
    EXPECT_LT(volumeNow(), fullVolume);
    pass(0.5);
    EXPECT_EQ(volumeNow(), fullVolume);
    EXPECT_EQ(engine->status(), Kind::disabled);
    EXPECT_THAT(engine->history(), SizeIs(1));

    // An ad that starts at the moment of switching off does not count.
    engine->setIsEnabled(true);
    started();
    pipeline->onAdStart();
    engine->setIsEnabled(false);
    pipeline->onAdEnd({});
    settle();
    hear(2, 0.9F);  // hops that were still pending
    capture->stopDone();
    pass(1);
    EXPECT_FALSE(engine->adActive());
    EXPECT_EQ(volumeNow(), fullVolume);
    EXPECT_THAT(engine->history(), SizeIs(1));

    // Neither does an ad of a capture that has ended since.
    engine->setIsEnabled(true);
    started();
    capture->stopped(std::nullopt);
    pipeline->onAdStart();
    settle();
    EXPECT_EQ(engine->status(), EngineStatus::failed("Audio capture stopped. Retrying…"));
}

TEST_F(EngineAdsTest, AnAdWhoseSoundStaysAwayIsEnded) {
    listen();
    hearAdBegin();
    pass(5);
    EXPECT_FALSE(engine->adActive());
    EXPECT_EQ(volumeNow(), fullVolume);
    EXPECT_EQ(engine->status(), Kind::listening);
}

TEST_F(EngineAdsTest, QuittingGivesTheVolumeBackAtOnceAndForGood) {
    listen();
    hearAdBegin();
    pass(1);
    engine->applicationWillTerminate();
    EXPECT_EQ(volumeNow(), fullVolume);
    EXPECT_FALSE(defaults->number("pendingRestoreVolume"));
    pipeline->onAdStart();  // a hop that was still being processed
    pass(1);
    EXPECT_EQ(volumeNow(), fullVolume);
}

TEST_F(EngineAdsTest, AStartBringsBackWhatACrashLeftDown) {
    defaults->set("pendingRestoreVolume", 0.7);
    objects->devices[speakers].volumes[0] = 0;
    create();
    EXPECT_FLOAT_EQ(volumeNow(), 0.7F);
}

TEST_F(EngineAdsTest, ASimulatedAdIsReallyFadedWhateverTheSwitchesSay) {
    for (const bool enabled : {true, false}) {
        for (const bool testMode : {true, false}) {
            defaults->set("enabled", enabled);
            create();
            engine->setTestMode(testMode);
            const auto status = engine->status();
            const auto before = engine->history().size();
            const auto start = wallClock;
            engine->simulate(6);
            engine->simulate(6);
            EXPECT_TRUE(engine->simulating());
            EXPECT_EQ(engine->menuIcon(), "speaker.slash.fill");
            pass(5.9);
            EXPECT_EQ(volumeNow(), 0);
            pass(0.1);
            EXPECT_FALSE(engine->simulating());
            pass(1);
            EXPECT_EQ(volumeNow(), fullVolume);
            EXPECT_EQ(engine->status(), status);
            ASSERT_EQ(engine->history().size(), before + 1);
            const AdEvent& event = engine->history()[0];
            EXPECT_EQ(event.start, start);
            EXPECT_NEAR(event.duration, 6, 0.11);
            EXPECT_EQ(event.app, "Radio");
            EXPECT_EQ(event.peakConfidence, 1);
            EXPECT_THAT(event.reasons, ElementsAre("Simulated"));
            EXPECT_EQ(event.kind, AdEvent::Kind::simulated);
            EXPECT_THAT(engine->realEvents(), IsEmpty());
            EXPECT_THAT(engine->appStats(), IsEmpty());
            EXPECT_EQ(engine->todaySummary(), TodaySummary{});
            engine.reset();
        }
    }
}

TEST_F(EngineAdsTest, TheVolumeCanBeAskedBackInAnAdWhichGoesOn) {
    listen();
    EXPECT_FALSE(engine->adFaded());
    hearAdBegin();
    pass(1);
    EXPECT_TRUE(engine->adFaded());
    engine->restoreVolume();
    pass(1);
    EXPECT_FALSE(engine->adFaded());
    EXPECT_EQ(volumeNow(), fullVolume);
    EXPECT_TRUE(engine->adActive());
    hear(6, 0.9F);
    pass(1);
    EXPECT_EQ(volumeNow(), fullVolume) << "the same ad is not faded again";
    EXPECT_TRUE(engine->adActive());
    hearAdEnd();
    ASSERT_EQ(engine->history().size(), 1U);
    EXPECT_EQ(engine->history()[0].kind, AdEvent::Kind::muted);
    hearAdBegin();
    pass(1);
    EXPECT_EQ(volumeNow(), 0) << "the next ad is faded";
    engine->stopCapture();
    settle();
    EXPECT_FALSE(engine->adFaded());

    engine->simulate(3);
    settle();
    EXPECT_TRUE(engine->adFaded());
    engine->restoreVolume();
    pass(1);
    EXPECT_EQ(volumeNow(), fullVolume);
    EXPECT_TRUE(engine->simulating());
    pass(3);
    engine->setTestMode(true);
    engine->setIsEnabled(true);
    settle();
    started();
    hearAdBegin();
    EXPECT_TRUE(engine->adActive());
    EXPECT_FALSE(engine->adFaded()) << "dry run: not faded";
}

TEST_F(EngineAdsTest, AskingTheVolumeBackForgetsTheSoundOfTheAd) {
    listen();
    const auto hearAdThatIsKnownAgain = [this](bool asked) {
        hearAdBegin();
        float best = 0;
        std::vector<std::byte> hop(8'000 * 2, std::byte{0});
        for (int i = 0; i < 9; ++i) {
            // A square wave; every other hop is louder.
            for (std::size_t sample = 0; sample < hop.size(); sample += 4) {
                hop[sample + 1] = std::byte{static_cast<unsigned char>(i % 2 == 0 ? 0x20 : 0x08)};
            }
            capture->handler({StreamDescription{16'000, 1, SampleType::int16, true}, 8'000, hop});
            settle();
            best = std::max(best, scorer->last.repetition);
        }
        if (asked) {
            engine->restoreVolume();
            settle();
        }
        return best > 0.99F;
    };
    EXPECT_FALSE(hearAdThatIsKnownAgain(true));
    hearAdEnd();
    EXPECT_FALSE(hearAdThatIsKnownAgain(false));
    hearAdEnd();
    EXPECT_TRUE(hearAdThatIsKnownAgain(false));
}

TEST_F(EngineAdsTest, SimulatedAndRealAdsDoNotStack) {
    listen();
    hearAdBegin();
    engine->simulate(1);
    EXPECT_FALSE(engine->simulating());
    hearAdEnd();
    pass(1);

    for (const double notATime : {-1.0, std::numeric_limits<double>::infinity(), std::nan("")}) {
        engine->simulate(notATime);
        EXPECT_FALSE(engine->simulating());
    }
    engine->simulate(2);
    hearAdBegin();
    pass(3);  // the simulation ends first and restores the volume
    EXPECT_EQ(volumeNow(), fullVolume);
    EXPECT_FALSE(engine->simulating());
}

TEST_F(EngineAdsTest, TheHistoryKeepsFiveHundred) {
    AdHistory old(500);
    for (std::size_t i = 0; i < old.size(); ++i) {
        old[i] = {QUuid::createUuid(), -static_cast<double>(i), 1, "Old", 0.5, {}, AdEvent::Kind::muted};
    }
    AdHistoryFile(folder / "Sordin/history.json", historyQueue).save(old);
    settle();
    listen();
    EXPECT_EQ(engine->history(), old);
    engine->simulate(1);
    pass(1);
    EXPECT_THAT(engine->history(), SizeIs(500));
    EXPECT_EQ(engine->history()[0].app, "Radio");
    EXPECT_EQ(engine->history()[499], old[498]);
    EXPECT_EQ(saved(), engine->history());
}

}  // namespace
}  // namespace sordin
