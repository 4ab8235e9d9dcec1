// SPDX-License-Identifier: MIT
#include "fakes/fake_speech.h"
#include "platform/on_device_transcriber.h"

#include <gmock/gmock.h>

#include <atomic>
#include <thread>

namespace sordin {
namespace {

class OnDeviceTranscriberTest : public testing::Test {
protected:
    [[nodiscard]] FakeSpeechRecogniser::Session& session(std::size_t index) const {
        return *recogniser->sessions.at(index);
    }

    std::shared_ptr<FakeSpeechRecogniser> recogniser = std::make_shared<FakeSpeechRecogniser>();
    std::unique_ptr<OnDeviceTranscriber> transcriber = std::make_unique<OnDeviceTranscriber>(recogniser);
    const PcmBuffer buffer{{16'000, 1}, std::vector<float>(320, 0.5F)};
};

TEST_F(OnDeviceTranscriberTest, HoldsWhatASessionSays) {
    transcriber->append(buffer);
    transcriber->end();
    EXPECT_TRUE(recogniser->sessions.empty());
    transcriber->begin();
    EXPECT_TRUE(transcriber->active());
    EXPECT_EQ(transcriber->text(), "");
    transcriber->append(buffer);
    session(0).say("promo");
    session(0).say("promo code");
    EXPECT_EQ(transcriber->text(), "promo code");
    session(0).fail("went wrong");
    EXPECT_TRUE(transcriber->active()) << "errors do not end the session";
    transcriber->end();
    EXPECT_FALSE(transcriber->active());
    EXPECT_EQ(transcriber->text(), "promo code") << "the text stays readable";
    transcriber->append(buffer);
    transcriber->end();
    EXPECT_EQ(session(0).frames, 320U);
    EXPECT_EQ(session(0).ends, 1);
    EXPECT_EQ(session(0).finishes, 1);
    session(0).say("promo codes");
    EXPECT_EQ(transcriber->text(), "promo codes") << "a late result still counts";

    transcriber->begin();
    transcriber->rest();
    EXPECT_FALSE(transcriber->active());
    EXPECT_EQ(recogniser->rests, 1);
}

TEST_F(OnDeviceTranscriberTest, BeginningAgainEndsWhatRanAndForgetsIt) {
    transcriber->begin();
    session(0).say("old");
    transcriber->begin();
    EXPECT_EQ(session(0).ends, 1);
    EXPECT_EQ(session(0).finishes, 1);
    EXPECT_TRUE(transcriber->active());
    EXPECT_EQ(transcriber->text(), "");
    session(0).say("late");
    EXPECT_EQ(transcriber->text(), "") << "a result of the previous session is ignored";
    recogniser->saidAtOnce = "at once";
    transcriber->begin();
    EXPECT_EQ(transcriber->text(), "at once");
    transcriber.reset();
    EXPECT_EQ(session(2).finishes, 1);
    session(2).say("nobody listens");
}

TEST_F(OnDeviceTranscriberTest, BeginsOnlyWhereEverythingIsThere) {
    transcriber->begin();
    session(0).say("kept");
    transcriber->end();
    for (bool FakeSpeechRecogniser::*part :
         {&FakeSpeechRecogniser::permitted, &FakeSpeechRecogniser::usable, &FakeSpeechRecogniser::local}) {
        recogniser.get()->*part = false;
        EXPECT_FALSE(transcriber->available());
        transcriber->begin();
        EXPECT_FALSE(transcriber->active());
        EXPECT_EQ(transcriber->text(), "kept");
        recogniser.get()->*part = true;
    }
    EXPECT_TRUE(transcriber->available());
    EXPECT_EQ(recogniser->sessions.size(), 1U);

    recogniser->starting = false;
    transcriber->begin();
    transcriber->append(buffer);
    transcriber->end();
    EXPECT_FALSE(transcriber->active());

    OnDeviceTranscriber without(nullptr);
    int answers = 0;
    without.requestAuthorization([&answers] { ++answers; });
    without.begin();
    without.rest();
    EXPECT_EQ(answers, 1);
    EXPECT_FALSE(without.available() || without.active() || without.authorised() ||
                 without.canRequestAuthorization());
}

TEST_F(OnDeviceTranscriberTest, ResultsMayComeOnAnotherThread) {
    transcriber->begin();
    std::atomic<bool> going = true;
    std::thread speaker([this, &going] {
        while (going) {
            session(0).say(std::string(100, 'a'));
        }
    });
    for (int round = 0; round < 2000; ++round) {
        const std::string text = transcriber->text();
        EXPECT_TRUE(text.empty() || text == std::string(100, 'a'));
        transcriber->append(buffer);
    }
    transcriber->end();
    going = false;
    speaker.join();
}

}  // namespace
}  // namespace sordin
