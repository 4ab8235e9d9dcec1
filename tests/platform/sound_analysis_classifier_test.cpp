// SPDX-License-Identifier: MIT
#include "fakes/fake_sound_tagger.h"
#include "platform/sound_analysis_classifier.h"

#include <gmock/gmock.h>

#include <atomic>
#include <cmath>
#include <thread>

namespace sordin {
namespace {

using testing::ElementsAre;

class SoundAnalysisClassifierTest : public testing::Test {
protected:
    /// The scores of music, speech and jingle.
    [[nodiscard]] std::vector<float> scores() const {
        const auto [music, speech, jingle] = classifier->current();
        return {music, speech, jingle};
    }
    std::vector<float> after(const std::vector<SoundLabel>& labels) const {
        tagger->say(labels);
        return scores();
    }

    std::shared_ptr<FakeSoundTagger::State> tagger = std::make_shared<FakeSoundTagger::State>();
    std::unique_ptr<SoundAnalysisClassifier> classifier =
        std::make_unique<SoundAnalysisClassifier>(std::make_unique<FakeSoundTagger>(tagger));
};

TEST_F(SoundAnalysisClassifierTest, FoldsLabelsIntoGroups) {
    EXPECT_THAT(scores(), ElementsAre(0, 0, 0));
    EXPECT_THAT(after({{"Music", 0.9}, {"Singing", 0.95}, {"music", 0.1}}), ElementsAre(0.95F, 0, 0));
    EXPECT_THAT(after({{"speech_synthesizer", 0.5}}), ElementsAre(0, 0.5F, 0))
        << "only the latest result counts";
    EXPECT_THAT(after({{"theme_music", 0.25}, {"rain", 1}}), ElementsAre(0.25F, 0, 0.25F));
    for (const std::string label : {"MUSIC", "choir_singing", "Musical_Instrument"}) {
        EXPECT_THAT(after({{label, 0.5}}), ElementsAre(0.5F, 0, 0)) << label;
    }
    for (const std::string label : {"Speech", "narration", "CONVERSATION", "inner_monologue"}) {
        EXPECT_THAT(after({{label, 0.5}}), ElementsAre(0, 0.5F, 0)) << label;
    }
    for (const std::string label : {"jingle_bell", "Fanfare", "theme"}) {
        EXPECT_THAT(after({{label, 0.5}}), ElementsAre(0, 0, 0.5F)) << label;
    }
    EXPECT_THAT(after({{"song", 1}, {"monotone", 1}, {"m\xC3\x9Csic", 1}, {"", 1}, {"speech", std::nan("")}}),
                ElementsAre(0, 0, 0));
    tagger->say({{"music", 0.5}});
    EXPECT_THAT(after({}), ElementsAre(0, 0, 0)) << "a result without labels";
}

TEST_F(SoundAnalysisClassifierTest, AnalysesOnceThereIsAnAnalyzerAndKeepsItThereafter) {
    const PcmBuffer buffer({16'000, 1}, {0.5F});
    classifier->analyze(buffer, 0);
    tagger->refusal = "cannot";
    EXPECT_FALSE(classifier->prepare({7, 1}));
    classifier->analyze(buffer, 1);
    EXPECT_THAT(tagger->positions, testing::IsEmpty());
    tagger->refusal.reset();
    EXPECT_TRUE(classifier->prepare({16'000, 1}));
    classifier->analyze(buffer, 2);
    tagger->refusal = "cannot";
    EXPECT_FALSE(classifier->prepare({7, 1}));
    classifier->analyze(buffer, 3);
    tagger->say({{"music", 1}});
    classifier->reset();
    EXPECT_THAT(scores(), ElementsAre(0, 0, 0));
    classifier->analyze(buffer, 4);
    EXPECT_THAT(tagger->positions, ElementsAre(2, 3, 4));
    EXPECT_THAT(after({{"speech", 1}}), ElementsAre(0, 1, 0)) << "results continue after a reset";
}

TEST_F(SoundAnalysisClassifierTest, IsReadWhileResultsArrive) {
    std::atomic<bool> done = false;
    std::thread results([&] {
        for (int i = 0; i < 20'000; ++i) {
            const double value = i % 2;
            tagger->say({{"music", value}, {"speech", value}, {"theme", value}});
        }
        done = true;
    });
    while (!done) {
        const auto [music, speech, jingle] = classifier->current();
        if (music != speech || speech != jingle) {
            ADD_FAILURE() << "a mixture of two results";
            break;
        }
        classifier->reset();
    }
    results.join();
}

TEST_F(SoundAnalysisClassifierTest, ALateResultFindsNobody) {
    const auto handler = tagger->handler;
    classifier.reset();
    const std::vector<SoundLabel> labels{{"music", 1}};
    handler(labels);
}

}  // namespace
}  // namespace sordin
