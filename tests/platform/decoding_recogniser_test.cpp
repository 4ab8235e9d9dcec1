// SPDX-License-Identifier: MIT
#include "classifier/mask_files.h"
#include "fakes/fake_speech.h"
#include "platform/decoding_recogniser.h"
#include "platform/masked_speech_decoder.h"
#include "platform/on_device_transcriber.h"
#include "random_seed.h"
#include "sounds.h"
#include "support/asio_serial_queue.h"
#include "support/manual_serial_queue.h"

#include <gmock/gmock.h>

#include <future>

namespace sordin {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// A tone of 500 Hz in the first channel.
PcmBuffer tone(double rate, double seconds, float amplitude = 0.5F, std::uint32_t channels = 1) {
    const auto frames = static_cast<std::size_t>(rate * seconds);
    auto samples = sine(500, rate, frames, static_cast<double>(amplitude));
    samples.resize(frames * channels);
    return {{rate, channels}, std::move(samples)};
}

class DecodingRecogniserTest : public testing::Test {
protected:
    std::shared_ptr<SpeechSession> start() {
        return recogniser->start([this](const std::string& text) { texts.push_back(text); },
                                 [this](const std::string& error) { errors.push_back(error); });
    }
    void run() { queue->runPending(); }

    std::shared_ptr<ManualSerialQueue> queue = std::make_shared<ManualSerialQueue>("sordin.speech");
    std::shared_ptr<FakeSpeechDecoder::Script> decoder = std::make_shared<FakeSpeechDecoder::Script>();
    bool installed = true;
    std::unique_ptr<DecodingRecogniser> recogniser = std::make_unique<DecodingRecogniser>(
        queue, DecodingRecogniser::Model{[this] { return installed; },
                                         [this] { return std::make_unique<FakeSpeechDecoder>(decoder); }});
    std::vector<std::string> texts;
    std::vector<std::string> errors;
};

TEST_F(DecodingRecogniserTest, GivesATextForEachHalfSecondThatChangesIt) {
    const auto session = start();
    EXPECT_EQ(decoder->loaded, 0) << "the caller's thread does not load the decoder";
    for (int buffer = 0; buffer < 60; ++buffer) {
        session->append(tone(16'000, 0.02));
    }
    run();
    EXPECT_THAT(texts, ElementsAre("1", "2")) << "a long queue gives as many texts";
    session->append(tone(16'000, 1));
    session->endAudio();
    session->append(tone(16'000, 1));
    session->finish();
    session->finish();
    run();
    EXPECT_THAT(texts, ElementsAre("1", "2", "3", "4"));
    EXPECT_EQ(decoder->ended, 1);
    session->append(tone(16'000, 1));
    run();
    EXPECT_EQ(texts.size(), 4U);
    EXPECT_THAT(errors, IsEmpty());
    EXPECT_EQ(decoder->loaded, 1);
}

TEST_F(DecodingRecogniserTest, EveryFormatReachesTheDecoderAtItsOwnRate) {
    for (const double rate : {8000.0, 16'000.0, 44'100.0, 48'000.0, 192'000.0}) {
        const auto session = start();
        session->append(tone(rate, 0.5, 0.5F, 2));
        session->append(tone(rate, 0.5, 4, 2));
        session->finish();
        run();
        const auto& heard = decoder->heard;
        EXPECT_NEAR(static_cast<double>(heard.size()), 16'000, 200) << rate;
        int crossings = 0;
        for (std::size_t i = 1; i < heard.size(); ++i) {
            crossings += heard[i - 1] < 0 && heard[i] >= 0 ? 1 : 0;
        }
        EXPECT_NEAR(crossings, 500, 10) << rate;
        const auto highest = *std::max_element(heard.begin(), heard.begin() + 7000);
        EXPECT_NEAR(highest, 16384, 400) << rate;
        EXPECT_EQ(*std::max_element(heard.begin(), heard.end()), 32767)
            << "samples above full scale are clipped";
    }
    const auto session = start();
    for (const double rate : {0.0, -1.0, std::nan(""), 1e-300, 1e300}) {
        session->append({{rate, 1}, std::vector<float>(100, 0.5F)});
    }
    session->append(tone(16'000, 0.1));
    run();
    EXPECT_EQ(decoder->heard.size(), 1600U) << "impossible rates are ignored";
    EXPECT_THAT(errors, IsEmpty());
}

TEST_F(DecodingRecogniserTest, DropsAudioRatherThanFallBehind) {
    const auto session = start();
    for (int second = 0; second < 60; ++second) {
        session->append(tone(16'000, 1));
    }
    run();
    EXPECT_EQ(decoder->heard.size(), 3U * 16'000) << "only audio beyond two seconds is dropped";
    session->append(tone(16'000, 1));
    run();
    EXPECT_EQ(decoder->heard.size(), 4U * 16'000) << "the decoder has caught up";
    for (int second = 0; second < 60; ++second) {
        session->append(tone(16'000, 1));
        recogniser->drain();
    }
    EXPECT_EQ(decoder->heard.size(), 64U * 16'000) << "audio at the decoder's pace is never dropped";
}

TEST_F(DecodingRecogniserTest, FailuresEndTheSessionAndTheNextBeginsAfresh) {
    decoder->begins = false;
    auto session = start();
    session->append(tone(16'000, 1));
    run();
    EXPECT_THAT(errors, ElementsAre("died"));
    EXPECT_TRUE(recogniser->available());
    decoder->begins = true;
    session = start();
    session->append(tone(16'000, 1));
    run();
    EXPECT_EQ(decoder->loaded, 2);
    EXPECT_THAT(texts, ElementsAre("1", "2"));
    decoder->works = false;
    session->append(tone(16'000, 1));
    session->append(tone(16'000, 1));
    session->finish();
    run();
    EXPECT_THAT(errors, ElementsAre("died", "died")) << "one error per session";
    EXPECT_EQ(decoder->alive, 0);
    decoder->works = true;
    session = start();
    run();
    decoder->works = false;
    session->finish();
    run();
    EXPECT_THAT(errors, ElementsAre("died", "died", "died")) << "an error at the end of the session";

    decoder->loads = false;
    session = start();
    session->append(tone(16'000, 1));
    run();
    EXPECT_EQ(errors.back(), "does not load");
    EXPECT_FALSE(recogniser->available());
    EXPECT_TRUE(recogniser->authorised()) << "the model is installed";
}

TEST_F(DecodingRecogniserTest, KnowsOnlyWhatIsInstalled) {
    EXPECT_TRUE(recogniser->authorised() && recogniser->canRequestAuthorisation() && recogniser->available());
    EXPECT_TRUE(recogniser->supportsOnDevice());
    bool answered = false;
    recogniser->requestAuthorisation([&] { answered = true; });
    EXPECT_TRUE(answered);
    installed = false;
    EXPECT_FALSE(recogniser->authorised() || recogniser->canRequestAuthorisation() ||
                 recogniser->available());
}

TEST_F(DecodingRecogniserTest, HandsBackItsMemory) {
    auto session = start();
    session->append(tone(16'000, 1));
    recogniser->rest();
    run();
    EXPECT_EQ(decoder->alive, 1) << "the decoder stays while it works";
    session->finish();
    run();
    EXPECT_EQ(decoder->alive, 0);
    session = start();
    session->append(tone(16'000, 1));
    session->finish();
    run();
    EXPECT_EQ(decoder->alive, 1) << "sessions share the decoder";
    recogniser->rest();
    run();
    EXPECT_EQ(decoder->alive, 0);
    session = start();
    run();
    recogniser.reset();
    run();
    EXPECT_EQ(decoder->alive, 0);
    session->append(tone(16'000, 1));
    session->finish();
    run();
    EXPECT_THAT(errors, IsEmpty());
}

TEST_F(DecodingRecogniserTest, TenThousandSessionsThatAreOverAtOnceCostNothing) {
    OnDeviceTranscriber transcriber(std::shared_ptr<SpeechRecogniser>(std::move(recogniser)));
    for (int round = 0; round < 10'000; ++round) {
        transcriber.begin();
        transcriber.end();
    }
    queue->runPending();
    EXPECT_EQ(decoder->begun, 0) << "sessions that ended at once are not decoded";
    for (int round = 0; round < 10'000; ++round) {
        transcriber.begin();
        queue->runPending();
        transcriber.end();
    }
    queue->runPending();
    EXPECT_EQ(decoder->begun, 10'000);
    EXPECT_EQ(decoder->ended, 10'000);
    EXPECT_EQ(decoder->loaded, 1);
}

TEST_F(DecodingRecogniserTest, ASlowDecoderOnItsThreadHoldsNobodyUp) {
    const auto thread = std::make_shared<AsioSerialQueue>("sordin.speech");
    DecodingRecogniser slow(
        thread, {[] { return true; }, [this] { return std::make_unique<FakeSpeechDecoder>(decoder); }});
    std::promise<void> goOn;
    decoder->onProcess = [&, waiting = goOn.get_future().share()] { waiting.wait(); };
    std::atomic<int> count = 0;
    const auto session = slow.start([&](const std::string& /*text*/) { ++count; }, {});
    for (int second = 0; second < 100; ++second) {
        session->append(tone(16'000, 1));  // must return although the decoder hangs
    }
    session->finish();
    EXPECT_EQ(count, 0);
    goOn.set_value();
    slow.drain();
    EXPECT_EQ(count, 6);
    thread->sync([&] { EXPECT_EQ(decoder->heard.size(), 3U * 16'000); });
}

TEST_F(DecodingRecogniserTest, EndsThoughItsDecoderHangs) {
    std::promise<void> begun;
    std::promise<void> interrupted;
    bool inTime = false;
    decoder->onProcess = [&] {
        begun.set_value();
        inTime = interrupted.get_future().wait_for(std::chrono::seconds(20)) == std::future_status::ready;
    };
    std::optional<DecodingRecogniser> hung(
        std::in_place, std::make_shared<AsioSerialQueue>("sordin.speech"),
        DecodingRecogniser::Model{[] { return true; },
                                  [this] { return std::make_unique<FakeSpeechDecoder>(decoder); },
                                  [&] { interrupted.set_value(); }});
    const auto session = hung->start({}, {});
    session->append(tone(16'000, 0.1));
    begun.get_future().wait();
    hung.reset();
    EXPECT_TRUE(inTime);
    EXPECT_EQ(decoder->alive, 0);
}

TEST(MaskedSpeechDecoder, GivesTheDecoderAllSamplesThroughTheMaskForEachText) {
    auto random = seededRandom();
    SpeechMaskModel mask = smallMask(random);
    mask.strength = 0;  // delays by half a window only
    const auto script = std::make_shared<FakeSpeechDecoder::Script>();
    MaskedSpeechDecoder decoder(std::make_unique<FakeSpeechDecoder>(script), mask);
    for (const std::int16_t level : {std::int16_t{1'000}, std::int16_t{-32'767}}) {
        const std::vector<std::int16_t> samples(333, level);
        decoder.begin();
        decoder.process(samples);
        decoder.end();
        ASSERT_GE(script->heard.size(), 365U);
        for (std::size_t i = 0; i < 365; ++i) {
            EXPECT_NEAR(script->heard[i], i < 32 ? 0 : level, 1) << i;
        }
    }
    EXPECT_EQ(script->ended, 2);
}

TEST(MaskedSpeechDecoder, LeavesAVoiceAloneFromWhichTheMaskTakesHardlyAnything) {
    auto random = seededRandom();
    // The mask's gain is the same for all bins; what is taken off is 20 lg(gain / (1 - gain)) below what is
    // left.
    const auto heard = [&random](float gain) {
        SpeechMaskModel mask = smallMask(random);
        mask.strength = 1;
        mask.gains.weights.assign(mask.gains.weights.size(), 0.0F);
        mask.gains.bias.assign(mask.gains.bias.size(), std::log(gain / (1 - gain)));
        const auto script = std::make_shared<FakeSpeechDecoder::Script>();
        MaskedSpeechDecoder decoder(std::make_unique<FakeSpeechDecoder>(script), mask);
        decoder.begin();
        for (int i = 0; i < 100; ++i) {
            decoder.process(std::vector<std::int16_t>(333, 10'000));
        }
        return script->heard.back() / 10'000.0;
    };
    EXPECT_NEAR(heard(0.5F), 0.5, 0.01) << "music is taken off";
    EXPECT_NEAR(heard(0.94F), 0.94, 0.002) << "24 dB";
    EXPECT_NEAR(heard(0.96F), 0.971, 0.003) << "27.6 dB: between";
    EXPECT_NEAR(heard(0.98F), 1, 0.001) << "34 dB: clean";
}

}  // namespace
}  // namespace sordin
