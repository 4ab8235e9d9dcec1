// SPDX-License-Identifier: MIT
#include "engine_fixture.h"

namespace sordin {
namespace {

class EngineCaptureTest : public EngineTest {};

TEST_F(EngineCaptureTest, AStartRunsOnceAndEndsInListeningOrInWhatWentWrong) {
    create();
    EXPECT_EQ(engine->status(), Kind::starting);
    engine->startCapture();
    engine->startCapture();
    EXPECT_EQ(capture->starts, 1);
    EXPECT_EQ(capture->queue->label(), "sordin.audio");
    capture->completion(Failure(Error::refused, "no sound today"));
    EXPECT_EQ(engine->status(), Kind::starting);  // until the main thread handles the result
    settle();
    EXPECT_EQ(engine->status(), EngineStatus::failed("no sound today"));
    pass(30);
    EXPECT_EQ(capture->starts, 1);  // a failed start is not repeated

    engine->startCapture();
    started();
    EXPECT_EQ(engine->status(), Kind::listening);
}

TEST_F(EngineCaptureTest, SwitchingOffCancelsAStart) {
    create();
    const auto late = capture->completion;
    engine->setIsEnabled(false);
    EXPECT_EQ(engine->status(), Kind::disabled);
    EXPECT_EQ(capture->stops, 1);
    engine->setIsEnabled(true);
    EXPECT_EQ(capture->starts, 2);
    late(Failure(Error::cancelled));  // completion of the first start
    settle();
    EXPECT_EQ(engine->status(), Kind::starting);
    started();
    EXPECT_EQ(engine->status(), Kind::listening);

    engine->setIsEnabled(false);
    started();  // completion of the second start
    EXPECT_EQ(engine->status(), Kind::disabled);
}

TEST_F(EngineCaptureTest, ACaptureThatStopsByItselfIsStartedAgainAfterThreeSeconds) {
    listen();
    hearAdBegin();
    stopped(Failure(Error::connectionLost));
    EXPECT_EQ(engine->status(), EngineStatus::failed("Audio capture stopped. Retrying…"));
    EXPECT_FALSE(engine->adActive());
    EXPECT_EQ(engine->history().size(), 1U);  // the ad ended there
    pass(2.9);
    EXPECT_EQ(capture->starts, 1);
    EXPECT_EQ(volumeNow(), fullVolume);
    pass(0.2);
    EXPECT_EQ(capture->starts, 2);
    EXPECT_EQ(engine->status(), Kind::starting);
    started();
    EXPECT_EQ(engine->status(), Kind::listening);

    stopped(Failure(Error::connectionLost));
    engine->setIsEnabled(false);
    pass(5);
    EXPECT_EQ(capture->starts, 2);
    EXPECT_EQ(engine->status(), Kind::disabled);

    // While switched off, a stop has no effect.
    stopped();
    EXPECT_EQ(engine->status(), Kind::disabled);

    // A capture that the user switches back on at once is not started twice.
    engine->setIsEnabled(true);
    started();
    stopped();
    engine->setIsEnabled(false);
    engine->setIsEnabled(true);
    capture->completion(std::nullopt);
    const int starts = capture->starts;
    pass(10);
    EXPECT_EQ(capture->starts, starts);
    EXPECT_EQ(engine->status(), Kind::listening);
}

TEST_F(EngineCaptureTest, WhenAnAudioServerAppearsWhatFailedIsTriedAgain) {
    create();
    started(Failure(Error::unreachable));
    ready();
    EXPECT_EQ(capture->starts, 2);
    ready();  // during the start
    EXPECT_EQ(capture->starts, 2);
    started();
    ready();  // while it runs
    EXPECT_EQ(engine->status(), Kind::listening);
    EXPECT_EQ(capture->starts, 2);

    // If the server returns within the three seconds, the capture restarts at once, and only once.
    stopped(Failure(Error::connectionLost));
    ready();
    EXPECT_EQ(capture->starts, 3);
    capture->completion(std::nullopt);
    pass(10);
    EXPECT_EQ(capture->starts, 3);
    EXPECT_EQ(engine->status(), Kind::listening);

    // Permission flags are read again.
    permissions->granted = false;
    engine->setIsEnabled(false);
    engine->setIsEnabled(true);
    EXPECT_EQ(engine->status(), Kind::needsPermission);
    EXPECT_EQ(capture->starts, 3);
    permissions->granted = true;
    ready();
    EXPECT_EQ(engine->status(), Kind::starting);
    EXPECT_TRUE(engine->screenAccess());

    // No start happens while switched off or before the guide is finished.
    engine->setIsEnabled(false);
    const int starts = capture->starts;
    capture->ready();
    engine->setOnboardingComplete(false);
    engine->setIsEnabled(true);
    started(Failure(Error::unreachable));
    ready();
    EXPECT_EQ(capture->starts, starts + 1);
}

TEST_F(EngineCaptureTest, WhatIsHeardIsPublishedWhileSwitchedOn) {
    listen();
    scorer->contributions.append({"Audio", 0.25F});
    scorer->contributions.append({"Timing", 0.1F});
    hear(2, 0.4F);
    EXPECT_EQ(engine->confidence(), static_cast<double>(0.4F));
    EXPECT_THAT(engine->signalReadings(),
                testing::ElementsAre(SignalReading{"Audio", 0.25},
                                     SignalReading{"Timing", static_cast<double>(0.1F)}));
    ASSERT_EQ(engine->trail().size(), 1U);
    EXPECT_EQ(engine->trail()[0].time, wallClock);
    EXPECT_EQ(engine->trail()[0].threshold, engine->threshold());

    hear(2 * 185, 0.3F);
    EXPECT_EQ(engine->trail().size(), 180U);
    EXPECT_EQ(engine->trail().back().time, wallClock);
    EXPECT_NEAR(engine->trail().front().time, wallClock - 179, 1e-3);

    engine->setIsEnabled(false);
    settle();
    EXPECT_EQ(engine->confidence(), 0);
    EXPECT_TRUE(engine->signalReadings().empty());
    EXPECT_EQ(engine->trail().size(), 180U);  // remains visible
    hear(4, 0.4F);                            // a late hop
    EXPECT_EQ(engine->confidence(), 0);
}

TEST_F(EngineCaptureTest, ATranscriptStaysUntilThereIsAnother) {
    listen();
    const auto show = [this](const std::string& text, bool running) {
        PipelineTick tick;
        tick.transcript = text;
        tick.transcribing = running;
        pipeline->onTick(tick);
        settle();
        return engine->transcript().toStdString();
    };
    EXPECT_EQ(show("use promo code", true), "use promo code");
    EXPECT_EQ(show("", true), "use promo code");
    EXPECT_TRUE(engine->transcribing());
    EXPECT_EQ(show("order now", true), "order now");
    EXPECT_EQ(show("", false), "");
}

TEST_F(EngineCaptureTest, NewsThatComeAfterTheEngineAreDropped) {
    listen();
    hearAdBegin();
    const auto late = *capture;
    const auto tick = pipeline->onTick;
    const auto start = pipeline->onAdStart;
    late.stopped(std::nullopt);  // posted, not yet run
    tick({});
    engine.reset();
    volume.reset();
    late.completion(std::nullopt);
    late.ready();
    start();
    tick({});
    settle();
    mainQueue->advance(std::chrono::seconds(10));
}

}  // namespace
}  // namespace sordin
