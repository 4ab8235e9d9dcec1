// SPDX-License-Identifier: MIT
#include "allocation_counter.h"
#include "classifier/model_files.h"
#include "classifier/network_sound_tagger.h"
#include "platform/sound_analysis_classifier.h"
#include "random_seed.h"

#include <gtest/gtest.h>

namespace sordin {
namespace {

TEST(TaggingAllocation, ASteadyStreamAllocatesNothing) {
    auto random = seededRandom();
    const SoundModel model = smallModel(random);
    for (const double rate : {4'000.0, 44'100.0}) {
        SoundAnalysisClassifier classifier(std::make_unique<NetworkSoundTagger>(model));
        const AudioFormat format{rate, 1};
        ASSERT_TRUE(classifier.prepare(format));
        const PcmBuffer buffer(format, randomWeights(random, 5'000, 100));
        std::int64_t position = 0;
        const auto play = [&] {
            for (int i = 0; i < 60; ++i) {
                classifier.analyze(buffer, position);
                position += 5'000 + i % 3 * 1'000;  // sometimes skips silence
            }
        };
        play();
        const std::size_t before = allocationCount();
        play();
        EXPECT_EQ(allocationCount(), before) << rate;
        EXPECT_GT(classifier.current().speech, 0);
    }
}

}  // namespace
}  // namespace sordin
