// SPDX-License-Identifier: MIT
#include "replay/replay.h"

#include "classifier/network_sound_tagger.h"
#include "detection/heuristic_ad_scorer.h"
#include "detection/keyword_transcript_scorer.h"
#include "platform/on_device_transcriber.h"
#include "platform/sound_analysis_classifier.h"
#include "replay/input_error.h"
#include "replay/stand_ins.h"
#include "support/manual_serial_queue.h"

#include <algorithm>
#include <utility>

namespace sordin::replay {

namespace {

/// The clock's initial time in seconds; at 0, a transcription session would seem to have just ended.
constexpr double clockStart = 1e9;

/// A pipeline with a manual clock and queue.
class Player {
public:
    Player(const Settings& settings, Hearing hearing, const HopHandler& onHop)
        : cues_(std::move(hearing.cues)),
          recogniser_(watched(std::move(hearing.recogniser))),
          transcriber_(transcriber()),
          pipeline_(std::make_shared<DetectionPipeline>(
              DetectionPipeline::Parts{queue_, clock_, classifier(hearing.model.get()), transcriber_,
                                       keywords_, std::make_shared<HeuristicAdScorer>()})) {
        pipeline_->configure(settings.threshold, settings.transcription, settings.rules);
        pipeline_->onAdStart = [this] { ads_.push_back({{position(), position()}, 0, {}, true}); };
        pipeline_->onAdEnd = [this](const AdSummary& summary) {
            ads_.back().interval.end = position();
            ads_.back().peak = summary.peakConfidence;
            ads_.back().reasons = summary.reasons;
            ads_.back().cutOff = ended_;
        };
        if (onHop) {
            pipeline_->onHop = [this, onHop](const auto& observation) {
                // The pipeline reads the transcript only of a session that was active before the hop.
                const bool read = transcribing_ && !observation.signals.silent;
                onHop({position(), observation,
                       read ? std::optional(keywords_->score(transcriber_->text())) : std::nullopt});
            };
        }
    }

    void play(std::vector<float> piece) {
        frames_ += piece.size();
        clock_->set(clockStart + position());
        const CueState& state = cues_.at(position());
        cueClassifier_->follow(state);
        cueTranscriber_->follow(state);
        pipeline_->ingest(PcmBuffer({replayRate, 1}, std::move(piece)));
        queue_->runPending();
        if (recogniser_ != nullptr) {
            recogniser_->drain();
        }
        followSession();
    }

    ReplayResult finish() {
        ended_ = true;
        pipeline_->stop();
        queue_->runPending();
        return {position(), std::move(ads_), std::move(transcripts_),
                recogniser_ != nullptr ? recogniser_->failure() : std::nullopt};
    }

private:
    [[nodiscard]] static std::shared_ptr<WatchedRecogniser>
    watched(std::shared_ptr<SpeechRecogniser> recogniser) {
        return recogniser == nullptr ? nullptr : std::make_shared<WatchedRecogniser>(std::move(recogniser));
    }

    [[nodiscard]] std::shared_ptr<SoundClassifying> classifier(const SoundModel* model) const {
        if (model == nullptr) {
            return cueClassifier_;
        }
        return std::make_shared<SoundAnalysisClassifier>(std::make_unique<NetworkSoundTagger>(*model));
    }

    [[nodiscard]] std::shared_ptr<SpeechTranscribing> transcriber() const {
        if (recogniser_ == nullptr) {
            return cueTranscriber_;
        }
        return std::make_shared<OnDeviceTranscriber>(recogniser_);
    }

    /// Records the text of the active session, if any.
    void followSession() {
        const bool active = transcriber_->active();
        if (active && !transcribing_) {
            transcripts_.push_back({{position(), position()}, {}, 0, {}});
        }
        if (active) {
            Transcript& transcript = transcripts_.back();
            transcript.interval.end = position();
            std::string text = transcriber_->text();
            if (text != transcript.text) {
                transcript.text = std::move(text);
                readTranscript(transcript);
            }
        }
        transcribing_ = active;
    }

    void readTranscript(Transcript& transcript) const {
        transcript.score = std::max(transcript.score, keywords_->score(transcript.text));
        for (const auto& phrase : KeywordTranscriptScorer::phrasesIn(transcript.text)) {
            const auto heard = [&phrase](const auto& earlier) { return earlier.text == phrase.text; };
            if (std::none_of(transcript.phrases.begin(), transcript.phrases.end(), heard)) {
                transcript.phrases.push_back({position(), phrase.text});
            }
        }
    }

    [[nodiscard]] double position() const { return static_cast<double>(frames_) / replayRate; }

    CueTrack cues_;
    std::size_t frames_ = 0;
    bool ended_ = false;
    std::vector<FoundAd> ads_;
    std::vector<Transcript> transcripts_;
    bool transcribing_ = false;
    std::shared_ptr<ManualSerialQueue> queue_ = std::make_shared<ManualSerialQueue>("sordin.audio");
    std::shared_ptr<ManualClock> clock_ = std::make_shared<ManualClock>(clockStart);
    std::shared_ptr<CueClassifier> cueClassifier_ = std::make_shared<CueClassifier>();
    std::shared_ptr<CueTranscriber> cueTranscriber_ = std::make_shared<CueTranscriber>();
    std::shared_ptr<WatchedRecogniser> recogniser_;
    std::shared_ptr<SpeechTranscribing> transcriber_;
    std::shared_ptr<KeywordTranscriptScorer> keywords_ = std::make_shared<KeywordTranscriptScorer>();
    std::shared_ptr<DetectionPipeline> pipeline_;
};

}  // namespace

ReplayResult replay(AudioFile& recording, const std::string& name, const Settings& settings, Hearing hearing,
                    const HopHandler& onHop, const ProgressHandler& onProgress) {
    Player player(settings, std::move(hearing), onHop);
    recording.readBuffers([&player](std::vector<float> samples) { player.play(std::move(samples)); },
                          onProgress);
    ReplayResult result = player.finish();
    if (result.duration == 0) {
        throw InputError(name + ": the recording contains no audio");
    }
    return result;
}

}  // namespace sordin::replay
