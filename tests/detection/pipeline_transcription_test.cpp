// SPDX-License-Identifier: MIT
// When transcription sessions run, and how transcripts are scored.
#include "detection/pipeline_fixture.h"

namespace sordin {
namespace {

class PipelineTranscriptionTest : public PipelineTest {
protected:
    PipelineTranscriptionTest() { classifier->scores.speech = 0.9F; }

    /// Starts a session: one suspicious hop, then the hop on which the session starts.
    void beginSession() {
        playHops(2, 0.1F, 0.3F);
        ASSERT_TRUE(transcriber->running);
    }

    [[nodiscard]] float keyword() const { return hops.back().signals.keyword; }
};

TEST_F(PipelineTranscriptionTest, BeginsOnSuspiciousSpeechOnly) {
    const auto begins = [&](float speech, float confidence, bool enabled = true, bool usable = true) {
        pipeline->configure(0.575F, enabled);
        classifier->scores.speech = 0;
        transcriber->usable = usable;
        playHops(1, 0.1F, confidence);  // the next hop uses this confidence
        classifier->scores.speech = speech;
        playHops(1);
        const bool begun = transcriber->running;
        transcriber->running = false;
        return begun;
    };
    EXPECT_FALSE(begins(0.3F, 0.3F));
    EXPECT_FALSE(begins(0.31F, 0.24F));
    EXPECT_FALSE(begins(0.9F, 0.3F, false));
    EXPECT_FALSE(begins(0.9F, 0.3F, true, false));
    EXPECT_TRUE(begins(0.31F, 0.25F));
    EXPECT_EQ(transcriber->begins, 1);
}

TEST_F(PipelineTranscriptionTest, GoesByTheConfidenceBeforeTheHopAndNeverInSilence) {
    playHops(1, 0.1F, 0.9F);
    EXPECT_FALSE(transcriber->running) << "the previous hop had a low confidence";
    playHops(1, 0);
    EXPECT_FALSE(transcriber->running) << "sessions do not start on silent hops";
    playHops(1);
    EXPECT_TRUE(transcriber->running);
    EXPECT_TRUE(hops.back().transcribing);
}

TEST_F(PipelineTranscriptionTest, BeginsInsideAnAdWhateverTheConfidence) {
    startAd();
    transcriber->end();
    playHops(1, 0.1F, 0);
    transcriber->end();
    const int before = transcriber->begins;
    playHops(1, 0.1F, 0);
    EXPECT_EQ(transcriber->begins, before + 1);
}

TEST_F(PipelineTranscriptionTest, EndsAfterFifteenSecondsAndPausesForEight) {
    beginSession();
    playHops(30);  // 15.0 s after the session started
    EXPECT_TRUE(transcriber->running);
    transcriber->transcript = "promo code";
    playHops(1);
    EXPECT_FALSE(transcriber->running);
    EXPECT_FLOAT_EQ(keyword(), 1 / 1.2F) << "the last words of the session count";
    playHops(16);  // 8.0 s after the session ended
    EXPECT_EQ(transcriber->begins, 1);
    playHops(1);
    EXPECT_EQ(transcriber->begins, 2);
}

TEST_F(PipelineTranscriptionTest, EndsAfterEightUnsuspiciousHopsInARow) {
    beginSession();
    playHops(8, 0.1F, 0.14F);  // the first hop still uses the earlier confidence
    EXPECT_TRUE(transcriber->running);
    playHops(1, 0.1F, 0.15F);
    EXPECT_FALSE(transcriber->running);

    playHops(16, 0.1F, 0.3F);
    playHops(8, 0.1F, 0.14F);  // the session starts on the first of these
    EXPECT_TRUE(transcriber->running) << "each session restarts the count";
    playHops(1, 0.1F, 0.14F);
    EXPECT_FALSE(transcriber->running);

    playHops(17, 0.1F, 0.3F);
    ASSERT_TRUE(transcriber->running);
    playHops(7, 0.1F, 0.1F);
    playHops(1, 0.1F, 0.15F);
    playHops(8, 0.1F, 0.1F);
    EXPECT_TRUE(transcriber->running) << "a suspicious hop restarts the count";
    playHops(20, 0);
    EXPECT_TRUE(transcriber->running) << "silent hops do not count";
}

TEST_F(PipelineTranscriptionTest, AnAdKeepsTheSessionGoing) {
    startAd();
    ASSERT_TRUE(transcriber->running);
    playHops(4, 0.1F, 0.5F);
    playHops(5, 0.1F, 0.1F);
    ASSERT_TRUE(hops.back().inAd);
    playHops(1, 0.1F, 0.1F);
    ASSERT_FALSE(hops.back().inAd);
    EXPECT_TRUE(transcriber->running);
    playHops(7, 0.1F, 0.1F);
    EXPECT_TRUE(transcriber->running);
    playHops(1, 0.1F, 0.1F);
    EXPECT_FALSE(transcriber->running);
}

TEST_F(PipelineTranscriptionTest, SwitchingOffEndsTheSessionOnTheNextSoundingHop) {
    beginSession();
    pipeline->configure(0.575F, false);
    playHops(1, 0);
    EXPECT_TRUE(transcriber->running);
    transcriber->transcript = "promo code";
    playHops(1);
    EXPECT_FALSE(transcriber->running);
    EXPECT_FALSE(hops.back().signals.keywordActive);
    playHops(60);
    EXPECT_EQ(transcriber->begins, 1);
}

TEST_F(PipelineTranscriptionTest, FeedsTheSessionAllButSilence) {
    ingest(sound(4000));
    EXPECT_EQ(transcriber->framesAppended, 0U);
    transcriber->running = true;
    ingest(sound(300));
    ingest(sound(300, 0.0001F));
    ingest(sound(20));
    EXPECT_EQ(transcriber->framesAppended, 320U);
}

TEST_F(PipelineTranscriptionTest, TheKeywordLevelTakesTheBestAndFades) {
    beginSession();
    transcriber->transcript = "visit";  // 0.25
    playHops(1);
    EXPECT_FLOAT_EQ(keyword(), 0.25F);
    transcriber->transcript = "visit and subscribe";  // 0.5 / 1.2
    playHops(1);
    EXPECT_FLOAT_EQ(keyword(), 0.5F / 1.2F);
    transcriber->transcript = "nothing";
    float expected = 0.5F / 1.2F;
    for (int i = 0; i < 10; ++i) {
        expected *= 0.985F;
        playHops(1);
        EXPECT_FLOAT_EQ(keyword(), expected);
    }
    playHops(5, 0);
    playHops(1);
    EXPECT_FLOAT_EQ(keyword(), expected * 0.985F) << "silence does not decay the level";
    stop();
    transcriber->transcript = "promo code";
    playHops(1);
    EXPECT_EQ(keyword(), 0) << "a stop clears the level, and no transcript is read without a session";
}

TEST_F(PipelineTranscriptionTest, OtherRulesFadeAPhraseFromWhenItIsHeard) {
    DetectorRules rules;
    rules.keywordMemory = 0.5F;
    rules.keywordsFadeWhenHeard = true;
    rules.keywordsAfterAd = 0.1F;
    const auto levels = [this](std::initializer_list<const char*> transcripts) {
        std::vector<float> result;
        for (const char* transcript : transcripts) {
            transcriber->transcript = transcript;
            playHops(1);
            result.push_back(keyword() * 1.2F);
        }
        return result;
    };
    const auto are = [](std::vector<float> values) {
        return testing::Pointwise(testing::FloatNear(1e-6F), values);
    };
    beginSession();
    EXPECT_THAT(levels({"shop now", "shop now"}), are({0.7F, 0.7F}))
        << "the standard rules keep reading the transcript";
    pipeline->configure(0.575F, true, rules);
    EXPECT_THAT(levels({"shop now", "shop", "shop now"}),
                are({0.7F * 0.985F, 0.35F * 0.985F, 0.175F * 0.985F}))
        << "earlier phrases do not count again, nor phrases that the decoder retracts and repeats";
    EXPECT_THAT(levels({"shop now visit", "shop now visit"}), are({1, 0.5F}));
    transcriber->end();
    playHops(17, 0.1F, 0.3F);
    ASSERT_TRUE(transcriber->running);
    EXPECT_THAT(levels({"shop now"}), are({0.7F})) << "a new session has a new transcript";
    transcriber->transcript = "";
    playHops(2, 0.1F, 0.9F);
    playHops(6, 0.1F, 0);
    ASSERT_EQ(ends.size(), 1U);
    const float atEnd = keyword();
    playHops(1);
    EXPECT_FLOAT_EQ(keyword(), atEnd * 0.5F * 0.1F);
}

TEST_F(PipelineTranscriptionTest, AStopKeepsTheLastConfidenceTheTimesOfSessionsAndTheCountOfLowHops) {
    playHops(1, 0.1F, 0.3F);
    stop();
    classifier->scores.speech = 0.9F;
    playHops(1);
    ASSERT_TRUE(transcriber->running) << "uses the confidence from before the stop";
    playHops(8, 0.1F, 0.1F);  // seven of them follow a low hop
    stop();
    classifier->scores.speech = 0.9F;
    playHops(1, 0.1F, 0.3F);
    playHops(1, 0.1F, 0.1F);
    ASSERT_TRUE(transcriber->running) << "uses the confidence of the previous hop";
    playHops(1);
    EXPECT_FALSE(transcriber->running) << "the eighth low hop ends the session";
    playHops(2, 0.1F, 0.3F);
    stop();
    classifier->scores.speech = 0.9F;
    playHops(2);
    EXPECT_FALSE(transcriber->running) << "the pause continues";
}

TEST_F(PipelineTranscriptionTest, TheEndOfAnAdDiscountsWhatWasSaid) {
    startAd();
    ASSERT_TRUE(transcriber->running);
    transcriber->transcript = "sponsored by";
    playHops(1);
    EXPECT_FLOAT_EQ(keyword(), 1 / 1.2F);
    transcriber->transcript = "";
    playHops(6, 0.1F, 0);
    ASSERT_EQ(ends.size(), 1U);
    const float atEnd = keyword();
    playHops(1, 0.1F, 0);
    EXPECT_FLOAT_EQ(keyword(), atEnd * 0.985F * 0.3F);
    startAd();
    transcriber->running = true;
    transcriber->transcript = "sponsored by";
    playHops(1);
    clock->advance(4);
    pipeline->watchdog();
    queue->runPending();
    ASSERT_EQ(ends.size(), 2U);
    transcriber->transcript = "";
    playHops(1, 0.1F, 0);
    EXPECT_FLOAT_EQ(keyword(), 0.985F / 1.2F) << "an end by the watchdog does not discount";
}

}  // namespace
}  // namespace sordin
