// SPDX-License-Identifier: MIT
// Fakes of the detector's collaborators. They return what the test sets and record their arguments.
#pragma once

#include "detection/detection_interfaces.h"

#include <cstdint>
#include <string>
#include <vector>

namespace sordin {

struct FakeClassifier final : SoundClassifying {
    SoundClassification scores;
    bool preparable = true;
    std::vector<AudioFormat> prepared;
    std::vector<std::int64_t> positions;  // of the analyzed buffers
    std::int64_t hopsFrom = -1;
    int resets = 0;

    bool prepare(const AudioFormat& format) override {
        prepared.push_back(format);
        return preparable;
    }
    void analyze(const PcmBuffer& /*buffer*/, std::int64_t framePosition) override {
        positions.push_back(framePosition);
    }
    void countHopsFrom(std::int64_t framePosition) override { hopsFrom = framePosition; }
    [[nodiscard]] SoundClassification current() const override { return scores; }
    void reset() override {
        scores = {};
        ++resets;
    }
};

struct FakeTranscriber : SpeechTranscribing {
    bool running = false;
    bool usable = true;
    std::string transcript;
    int begins = 0;
    int ends = 0;
    std::size_t framesAppended = 0;

    [[nodiscard]] bool active() const override { return running; }
    [[nodiscard]] std::string text() const override { return transcript; }
    [[nodiscard]] bool available() const override { return usable; }
    void begin() override {
        running = true;
        transcript.clear();
        ++begins;
    }
    void end() override {
        running = false;
        ++ends;
    }
    void append(const PcmBuffer& buffer) override { framesAppended += buffer.frameLength(); }
};

/// Returns one confidence for all hops and records the signals of the last hop.
struct FakeScorer final : AdScoring {
    float confidence = 0;
    Contributions contributions;
    DetectionSignals last;
    DetectorRules rules;
    int resets = 0;

    void setRules(const DetectorRules& given) override { rules = given; }
    [[nodiscard]] AdVerdict update(const DetectionSignals& signals) override {
        last = signals;
        return {confidence, confidence, contributions};
    }
    void reset() override { ++resets; }
};

}  // namespace sordin
