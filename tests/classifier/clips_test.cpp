// SPDX-License-Identifier: MIT
// Compares the shipped model with the scores of its training for the same clips.
#include "classifier/network_sound_tagger.h"
#include "classifier/sound_model_file.h"
#include "replay/audio_file.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <fstream>
#include <map>

namespace sordin {
namespace {

namespace fs = std::filesystem;
using Scores = std::map<std::string, double>;

const fs::path modelPath = SORDIN_SOUND_MODEL;
const fs::path clips = SORDIN_CLIPS;

/// The checksum stored in a model file.
std::uint32_t checksumOf(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    file.seekg(16);
    std::uint32_t checksum = 0;
    for (unsigned shift = 0; shift < 32; shift += 8) {
        checksum |= static_cast<std::uint32_t>(file.get()) << shift;
    }
    return checksum;
}

/// All results of a clip. The first is for the first second, the others follow every half second.
std::vector<Scores> resultsOf(const SoundModel& model, const fs::path& clip) {
    NetworkSoundTagger tagger(model);
    std::vector<Scores> results;
    tagger.onLabels([&results](std::span<const SoundLabel> labels) {
        Scores& scores = results.emplace_back();
        for (const SoundLabel& label : labels) {
            scores[label.identifier] = label.confidence;
        }
    });
    const AudioFormat format{replay::replayRate, 1};
    EXPECT_EQ(tagger.prepare(format), std::nullopt);
    replay::AudioFile recording(clip.string());
    std::int64_t position = 0;
    for (std::vector<float> samples; recording.read(samples); samples.clear()) {
        tagger.analyze(PcmBuffer(format, samples), position);
        position += static_cast<std::int64_t>(samples.size());
    }
    return results;
}

TEST(SoundModelClips, AreScoredAsInTheTraining) {
    const SoundModel model = loadSoundModel(modelPath);
    std::size_t compared = 0;
    for (const auto& entry : fs::directory_iterator(clips)) {
        if (entry.path().extension() != ".json") {
            continue;
        }
        const auto expected = nlohmann::json::parse(std::ifstream(entry.path()));
        ASSERT_EQ(expected["model_crc"], checksumOf(modelPath)) << entry.path() << " is of another model";
        const auto results = resultsOf(model, fs::path(entry.path()).replace_extension(".flac"));
        ASSERT_EQ(results.size(), expected["results"].size()) << entry.path();
        double time = 1;
        for (std::size_t i = 0; i < results.size(); ++i, time += 0.5) {
            const auto& line = expected["results"][i];
            EXPECT_EQ(line["t"], time) << entry.path();
            for (const auto& [label, confidence] : results[i]) {
                EXPECT_NEAR(confidence, line.at(label).get<double>(), 0.01)
                    << entry.path() << ", " << time << " s, " << label;
            }
        }
        compared += results.size();
    }
    EXPECT_GT(compared, 0U) << "the model must have clips";
}

}  // namespace
}  // namespace sordin
