// SPDX-License-Identifier: MIT
#pragma once

#include "detection/detection_interfaces.h"
#include "platform/sound_tagger.h"

#include <memory>

namespace sordin {

/// Reduces a tagger's labels to the three scores of the detector. Each score is the highest confidence among
/// its labels in the latest result. Call `current` and `reset` from any thread, the rest from one thread at a
/// time.
class SoundAnalysisClassifier final : public SoundClassifying {
public:
    /// `tagger` must not be null.
    explicit SoundAnalysisClassifier(std::unique_ptr<SoundTagger> tagger);
    ~SoundAnalysisClassifier() override;
    SoundAnalysisClassifier(const SoundAnalysisClassifier&) = delete;
    SoundAnalysisClassifier& operator=(const SoundAnalysisClassifier&) = delete;

    bool prepare(const AudioFormat& format) override;
    void countHopsFrom(std::int64_t framePosition) override { tagger_->countHopsFrom(framePosition); }
    void analyze(const PcmBuffer& buffer, std::int64_t framePosition) override;
    [[nodiscard]] SoundClassification current() const override;
    void reset() override;

private:
    class State;

    const std::shared_ptr<State> state_;  // the tagger's callback may outlive the classifier
    const std::unique_ptr<SoundTagger> tagger_;
    bool prepared_ = false;
};

}  // namespace sordin
