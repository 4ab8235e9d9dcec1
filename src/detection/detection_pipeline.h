// SPDX-License-Identifier: MIT
#pragma once

#include "detection/ad_segmenter.h"
#include "detection/captured_audio.h"
#include "detection/context_change_detector.h"
#include "detection/detection_interfaces.h"
#include "detection/detector_rules.h"
#include "detection/feature_extractor.h"
#include "detection/hop_buffer.h"
#include "detection/repetition_index.h"
#include "detection/transcription_sessions.h"
#include "support/clock.h"
#include "support/serial_queue.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <span>

namespace sordin {

/// Detects ads in the stream of captured audio: cuts it into hops of 0.5 s, scores the evidence of each hop,
/// derives where ads start and end, and reports through callbacks. Also decides when speech is transcribed.
///
/// All work runs on one serial queue. Hold the pipeline by a shared pointer: posted work refers to it weakly
/// and does nothing after its destruction.
class DetectionPipeline : public std::enable_shared_from_this<DetectionPipeline> {
public:
    /// The pipeline's collaborators; none may be null.
    struct Parts {
        std::shared_ptr<SerialQueue> queue;  ///< labeled "sordin.audio"
        std::shared_ptr<const Clock> clock;
        std::shared_ptr<SoundClassifying> classifier;
        std::shared_ptr<SpeechTranscribing> transcriber;
        std::shared_ptr<const TranscriptScoring> transcriptScorer;
        std::shared_ptr<AdScoring> scorer;
    };

    /// Complete record of one hop.
    struct HopObservation {
        std::int64_t index;                     ///< number of hops before it
        std::optional<FrameFeatures> features;  ///< empty on a silent hop
        DetectionSignals signals;
        AdVerdict verdict;
        float threshold;
        std::optional<AdSegmenter::Event> event;
        bool inAd;  ///< after the hop
        bool transcribing;
    };

    explicit DetectionPipeline(Parts parts);

    /// Callbacks. Set them before audio flows; each may stay empty. They run on the queue and must not block
    /// it. A tick is sent on every second hop, and on each hop on which an ad starts or ends, after that
    /// callback.
    std::function<void(const PipelineTick&)> onTick;
    std::function<void()> onAdStart;
    std::function<void(const AdSummary&)> onAdEnd;
    /// For tools: called after every hop.
    std::function<void(const HopObservation&)> onHop;

    [[nodiscard]] SerialQueue& queue() const { return *parts_.queue; }

    /// Sets the detection threshold (a confidence, 0 to 1; above 1 no ad starts), the user's transcription
    /// switch and the rules. They apply from the next hop on, also to an ad in progress. The initial values
    /// are 0.575, true and the standard rules. Callable from any thread.
    void configure(float threshold, bool transcriptionEnabled, const DetectorRules& rules = standardRules());

    /// Takes the next buffer of the stream and processes every hop that it completes. pcmBuffer() in
    /// captured_audio.h makes buffers of captured audio. Only channel 0 is cut into hops; the classifier and
    /// the transcriber get the whole buffer unless it is silent. Ignores a buffer without frames or channels,
    /// also for the watchdog. The division of the stream into buffers does not affect the hops. Call on the
    /// queue only.
    void ingest(const PcmBuffer& buffer);

    /// Ends an ad in progress and resets the pipeline for a later start of the capture. Keeps the learned
    /// fingerprints and the time of the last ad. Asynchronous; callable from any thread.
    void stop();

    /// Ends an ad in progress if no audio has arrived for more than 3 s. Call it about once a second.
    /// Asynchronous; callable from any thread.
    void watchdog();

    /// Forgets all learned fingerprints. Asynchronous; callable from any thread.
    void forgetLearnedAds();

    /// Treats the ad in progress, or the last one if none is in progress, as a false detection: forgets the
    /// fingerprints learned since it began and learns no more from it. Asynchronous; callable from any
    /// thread.
    void disownAd();

private:
    struct Configuration {
        float threshold = 0.575F;
        bool transcriptionEnabled = true;
        DetectorRules rules;
    };

    /// Posts a call of `action` that does nothing if the pipeline has been destroyed.
    void post(void (DetectionPipeline::*action)());
    void stopNow();
    void checkIngest();
    void forgetNow();
    void disownNow();

    void prepare(const AudioFormat& format);
    void feed(const PcmBuffer& buffer);
    [[nodiscard]] Configuration configuration();
    void processHop(std::span<const float> samples);
    /// Collects the evidence of a hop that is not silent. Advances the state of the detectors, so call it
    /// exactly once per hop.
    [[nodiscard]] DetectionSignals gather(const FrameFeatures& features, bool transcriptionEnabled,
                                          double now);
    /// Strength of a context change. Stores both arguments for the next hops.
    [[nodiscard]] float boundary(const SoundClassification& current, const Bands& bands);
    /// Rise above the running average level, dB. Then updates the average.
    [[nodiscard]] float loudnessRise(float db);
    void learnFromAd();
    void announce(const AdSegmenter::Event& event, double now);
    void tick(const DetectionSignals& signals, const AdVerdict& verdict, float threshold) const;

    Parts parts_;
    FeatureExtractor extractor_;
    ContextChangeDetector change_;
    RepetitionIndex repetition_;
    AdSegmenter segmenter_;
    TranscriptionSessions sessions_;

    std::mutex cfgLock_;
    Configuration configuration_;  // guarded by cfgLock_

    std::optional<AudioFormat> preparedFormat_;
    HopBuffer hop_;
    std::int64_t framesSeen_ = 0;
    double lastIngest_;
    std::int64_t hopCount_ = 0;
    std::optional<float> avgDb_;
    SoundClassification prevClass_;  // of the last hop that was not silent
    float lastConfidence_ = 0;
    std::optional<double> lastAdEnd_;
    std::int64_t adHops_ = 0;      // hops of the current ad that were not silent
    std::size_t learnedInAd_ = 0;  // fingerprints learned from the current or last ad
    bool adDisowned_ = false;      // the current or last ad was a false detection
};

}  // namespace sordin
