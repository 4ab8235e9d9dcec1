// SPDX-License-Identifier: MIT
#include "platform/sound_analysis_classifier.h"

#include <algorithm>
#include <array>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>

namespace sordin {

namespace {

/// A score and the words that assign a label to it.
struct Group {
    float SoundClassification::*score;
    std::array<std::string_view, 4> words;  // unused ones are empty
};

constexpr std::array<Group, 3> groups{{
    {&SoundClassification::music, {"music", "singing", "instrument"}},
    {&SoundClassification::speech, {"speech", "narration", "conversation", "monologue"}},
    {&SoundClassification::jingle, {"jingle", "fanfare", "theme"}},
}};

bool belongs(std::string_view identifier, const Group& group) {
    return std::any_of(group.words.begin(), group.words.end(), [identifier](std::string_view word) {
        return !word.empty() && identifier.find(word) != std::string_view::npos;
    });
}

/// Independent of the locale: identifiers are ASCII.
std::string lowerCased(std::string text) {
    for (char& c : text) {
        if (c >= 'A' && c <= 'Z') {
            c = static_cast<char>(c - 'A' + 'a');
        }
    }
    return text;
}

SoundClassification folded(std::span<const SoundLabel> labels) {
    SoundClassification scores;
    for (const SoundLabel& label : labels) {
        const std::string identifier = lowerCased(label.identifier);
        for (const Group& group : groups) {
            if (belongs(identifier, group)) {
                scores.*group.score = std::max(scores.*group.score, static_cast<float>(label.confidence));
            }
        }
    }
    return scores;
}

}  // namespace

class SoundAnalysisClassifier::State {
public:
    [[nodiscard]] SoundClassification get() const {
        const std::scoped_lock lock(lock_);
        return scores_;
    }
    void set(const SoundClassification& scores) {
        const std::scoped_lock lock(lock_);
        scores_ = scores;
    }

private:
    mutable std::mutex lock_;
    SoundClassification scores_;  // guarded by lock_
};

SoundAnalysisClassifier::SoundAnalysisClassifier(std::unique_ptr<SoundTagger> tagger)
    : state_(std::make_shared<State>()), tagger_(std::move(tagger)) {
    tagger_->onLabels([state = state_](std::span<const SoundLabel> labels) { state->set(folded(labels)); });
}

SoundAnalysisClassifier::~SoundAnalysisClassifier() = default;

bool SoundAnalysisClassifier::prepare(const AudioFormat& format) {
    // The reason is dropped because the detector works without the classifier.
    const bool done = !tagger_->prepare(format);
    prepared_ = prepared_ || done;
    return done;
}

void SoundAnalysisClassifier::analyze(const PcmBuffer& buffer, std::int64_t framePosition) {
    if (prepared_) {
        tagger_->analyze(buffer, framePosition);
    }
}

SoundClassification SoundAnalysisClassifier::current() const {
    return state_->get();
}

void SoundAnalysisClassifier::reset() {
    state_->set({});
}

}  // namespace sordin
