// SPDX-License-Identifier: MIT
#pragma once

#include "detection/detection_interfaces.h"
#include "platform/sound_tagger.h"

#include <memory>

namespace sordin {

/// Folds a tagger's many labels into the three scores that the detector weighs. Each is the highest
/// confidence among the labels that belong to it in the latest result alone. All operations but `current` and
/// `reset`, which any thread may call, are for one thread at a time.
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

    const std::shared_ptr<State> state_;  // a late result may outlive the classifier
    const std::unique_ptr<SoundTagger> tagger_;
    bool prepared_ = false;
};

}  // namespace sordin
