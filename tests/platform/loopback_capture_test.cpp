// SPDX-License-Identifier: MIT
#include "platform/loopback_capture.h"
#include "support/manual_serial_queue.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace sordin {
namespace {

using namespace std::chrono_literals;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using Error = SystemAudioCapture::Error;
using Failure = SystemAudioCapture::Failure;

/// A source that the test controls. `open` counts the open sources, of which there must never be two.
struct SourceState {
    std::optional<LoopbackSource::Obstacle> obstacle;
    LoopbackSource::Handlers handlers;
    std::function<void()> changed;
    int open = 0;
    int openings = 0;
    int questions = 0;
    bool wanted = false;
    bool outdated = false;
};

class FakeLoopbackSource final : public LoopbackSource {
public:
    explicit FakeLoopbackSource(SourceState& state) : state_(state) {}
    void onChange(std::function<void()> handler) override { state_.changed = std::move(handler); }
    std::optional<Obstacle> obstacle() override {
        ++state_.questions;
        return state_.obstacle;
    }
    void open(Handlers handlers) override {
        state_.handlers = std::move(handlers);
        ++state_.openings;
        EXPECT_EQ(++state_.open, 1);
        state_.wanted = true;
    }
    void setWanted(bool wanted) override { state_.wanted = wanted; }
    bool outdated() const override { return std::exchange(state_.outdated, false); }
    void close() override { state_.open = 0; }

private:
    SourceState& state_;
};

class LoopbackCaptureTest : public testing::Test {
protected:
    void start(const std::string& name = "start") {
        capture->start(
            audio,
            [this](const CapturedAudio& heard) {
                frames.push_back(heard.frameCount);
                lastHeard = heard;
            },
            [this, name](const auto& failure) {
                news.push_back(name + ": " + (failure ? failure->description : "running"));
            });
        control->runPending();
    }
    void stop(const std::string& name = "stop") {
        capture->stop([this, name] { news.push_back(name); });
        control->runPending();
    }
    void opened() {
        source.handlers.opened();
        control->runPending();
    }
    void run() {
        start();
        opened();
        news.clear();
    }
    /// Changes or removes the obstacle.
    void change(std::optional<LoopbackSource::Obstacle> obstacle = {}) {
        source.obstacle = std::move(obstacle);
        source.changed();
        control->runPending();
    }
    void settle() {
        for (int i = 0; i < 3; ++i) {
            control->runPending();
            audio->runPending();
        }
    }
    /// Stops long enough for the source to be closed.
    void stopForGood() {
        stop();
        settle();
        control->advance(LoopbackCapture::keepTime);
        EXPECT_EQ(source.open, 0);
        news.clear();
    }
    void hear(std::int64_t count) {
        source.handlers.heard({StreamDescription{16'000, 1, SampleType::float32, true}, count,
                               std::vector<std::byte>(static_cast<std::size_t>(count) * 4)});
    }

    SourceState source;
    std::shared_ptr<ManualSerialQueue> control = std::make_shared<ManualSerialQueue>("sordin.capture");
    std::shared_ptr<ManualSerialQueue> audio = std::make_shared<ManualSerialQueue>("sordin.audio");
    std::vector<std::string> news;
    std::vector<std::int64_t> frames;
    CapturedAudio lastHeard;
    std::unique_ptr<LoopbackCapture> capture =
        std::make_unique<LoopbackCapture>(control, std::make_unique<FakeLoopbackSource>(source));
};

TEST_F(LoopbackCaptureTest, DeliversWhatIsHeardInOrderAndHalfASecondOfZerosWhereNothingIs) {
    run();
    hear(3);
    hear(5);
    audio->advance(500ms);
    EXPECT_THAT(frames, ElementsAre(3, 5));  // sound arrived within this half second, so there are no zeros
    audio->advance(1000ms);
    EXPECT_THAT(frames, ElementsAre(3, 5, 8000, 8000));
    const auto zeros = pcmBuffer(lastHeard);
    ASSERT_TRUE(zeros);
    EXPECT_EQ(zeros->format(), (AudioFormat{16'000, 1}));
    EXPECT_EQ(zeros->frameLength(), 8000U);
    EXPECT_THAT(zeros->channel(0), Each(0.0F));
}

TEST_F(LoopbackCaptureTest, AStartWaitsTenSecondsForAServerAndSaysWhatWasMissing) {
    source.obstacle = {Failure(Error::unreachable), true};
    start();
    control->advance(9s);
    EXPECT_THAT(news, IsEmpty());
    change(LoopbackSource::Obstacle{Failure(Error::noOutput), true});
    control->advance(1s);
    EXPECT_THAT(news, ElementsAre("start: " + SystemAudioCapture::description(Error::noOutput)));

    news.clear();
    start();
    control->advance(5s);
    change();
    opened();
    control->advance(20s);
    EXPECT_THAT(news, ElementsAre("start: running"));

    // A start does not wait for a permanent obstacle.
    stopForGood();
    source.obstacle = {Failure(Error::noDisplay), false};
    start();
    EXPECT_THAT(news, ElementsAre("start: " + SystemAudioCapture::description(Error::noDisplay)));
}

TEST_F(LoopbackCaptureTest, TellsOnceWhenAStartThatFailedWouldNoLongerFail) {
    int ready = 0;
    capture->onReady([&] { ++ready; });
    const LoopbackSource::Obstacle noDisplay{Failure(Error::noDisplay), false};
    source.obstacle = noDisplay;
    start();
    change(noDisplay);
    EXPECT_EQ(ready, 0);
    change();
    change();
    EXPECT_EQ(ready, 1);

    // While the capture runs, or while a start waits for the server, there is no notification.
    run();
    change(noDisplay);
    change();
    EXPECT_EQ(ready, 1);
    stopForGood();
    source.obstacle = {Failure(Error::unreachable), true};
    start();
    change();
    EXPECT_EQ(ready, 1);
}

TEST_F(LoopbackCaptureTest, AServerThatIsLostWhileOpeningIsWaitedForAndOneThatRefusesIsNot) {
    start();
    source.obstacle = {Failure(Error::unreachable), true};
    source.handlers.ended(Failure(Error::connectionLost));
    control->runPending();
    change();
    EXPECT_THAT(news, IsEmpty());
    opened();
    EXPECT_THAT(news, ElementsAre("start: running"));
    EXPECT_EQ(source.openings, 2);

    stopForGood();
    start();
    source.handlers.ended(Failure(Error::refused, "no"));
    control->runPending();
    start("silent server");  // the server neither opens nor refuses
    control->advance(10s);
    EXPECT_THAT(
        news, ElementsAre("start: no", "silent server: " + SystemAudioCapture::description(Error::refused)));
    EXPECT_EQ(source.open, 0);
}

TEST_F(LoopbackCaptureTest, AStopWinsOverAStartAndTheHandlerIsQuietWhenItIsDone) {
    start();
    const auto old = source.handlers;
    stop();
    old.opened();  // a late notification
    settle();
    EXPECT_THAT(news, ElementsAre("start: cancelled", "stop"));
    stopForGood();

    run();
    hear(3);  // pending on the audio queue
    stop();
    stop("second stop");
    hear(4);
    EXPECT_THAT(news, IsEmpty());
    settle();
    EXPECT_THAT(news, ElementsAre("stop", "second stop"));
    EXPECT_THAT(frames, IsEmpty());
    start();
    audio->advance(500ms);
    EXPECT_THAT(news, ElementsAre("stop", "second stop", "start: running"));
    EXPECT_THAT(frames, ElementsAre(8000));

    start("again");
    EXPECT_EQ(news.back(), "again: " + SystemAudioCapture::description(Error::alreadyRunning));
    audio->advance(500ms);
    EXPECT_EQ(frames.size(), 2U);  // the first start continues
}

TEST_F(LoopbackCaptureTest, OffAndOnWithinASecondIsOneOpeningAndAnOvertakenStartDoesNothing) {
    start();
    for (int i = 0; i < 2000; ++i) {
        stop();
        EXPECT_FALSE(source.wanted);
        control->advance(i % 2 == 0 ? 10ms : 990ms);
        start();
        if (i == 1000) {
            opened();
        }
    }
    EXPECT_EQ(source.openings, 1);
    EXPECT_TRUE(source.wanted);
    EXPECT_EQ(news.back(), "start: running");
    hear(3);
    settle();
    EXPECT_THAT(frames, ElementsAre(3)) << "only the last start receives sound";
    stopForGood();
    source.questions = 0;
    for (int i = 0; i < 20; ++i) {
        capture->start(
            audio, [](const auto&) {}, [](const auto& failure) { EXPECT_TRUE(failure); });
        capture->stop([] {});
    }
    settle();
    EXPECT_EQ(source.questions, 0);
    EXPECT_EQ(source.openings, 1);
}

TEST_F(LoopbackCaptureTest, FollowsTheSoundToAnotherServerWithoutAWord) {
    run();
    for (const bool found : {true, false}) {
        source.outdated = true;
        change(found ? std::nullopt
                     : std::optional(LoopbackSource::Obstacle{Failure(Error::unreachable), true}));
        if (found) {
            opened();
            hear(3);
            settle();
            EXPECT_THAT(frames, ElementsAre(3));
            EXPECT_THAT(news, IsEmpty());
        }
    }
    capture->onStop([this](const auto& failure) { news.push_back("ended: " + failure->description); });
    control->advance(10s);
    EXPECT_THAT(news, ElementsAre("ended: " + SystemAudioCapture::description(Error::unreachable)));
}

TEST_F(LoopbackCaptureTest, ALossIsToldOnceAndLeavesTheCaptureStopped) {
    capture->onStop([this](const auto& failure) { news.push_back("ended: " + failure->description); });
    run();
    const auto old = source.handlers;
    old.ended(Failure(Error::connectionLost));
    old.ended(Failure(Error::connectionLost));
    control->runPending();
    audio->advance(2s);
    EXPECT_THAT(news, ElementsAre("ended: " + SystemAudioCapture::description(Error::connectionLost)));
    EXPECT_THAT(frames, IsEmpty());

    run();
    old.ended(Failure(Error::connectionLost));  // a late notification of the previous source
    control->runPending();
    stop();
    settle();
    EXPECT_THAT(news, ElementsAre("stop"));
}

TEST_F(LoopbackCaptureTest, DestructionEndsEverything) {
    run();
    const auto late = source.handlers;
    capture->onStop([this](const auto&) { news.emplace_back("ended"); });
    capture.reset();
    EXPECT_EQ(source.open, 0);
    late.ended(Failure(Error::connectionLost));
    late.heard(lastHeard);
    source.changed();
    settle();
    audio->advance(2s);
    EXPECT_THAT(news, IsEmpty());
    EXPECT_THAT(frames, IsEmpty());

    capture = std::make_unique<LoopbackCapture>(control, std::make_unique<FakeLoopbackSource>(source));
    start();
    capture.reset();
    EXPECT_THAT(news, ElementsAre("start: cancelled"));
}

}  // namespace
}  // namespace sordin
