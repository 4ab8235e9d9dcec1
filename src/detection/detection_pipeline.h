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

/// Turns the stream of captured audio into ads: cuts it into hops of half a second, gathers the evidence of
/// each, has it scored and segmented, and reports through callbacks. Also decides when speech is transcribed.
///
/// All work happens on one serial queue. Always held by shared pointers: work on the queue knows the pipeline
/// weakly, so that it may go away at any time.
class DetectionPipeline : public std::enable_shared_from_this<DetectionPipeline> {
public:
    /// Everything the pipeline works with; none may be null.
    struct Parts {
        std::shared_ptr<SerialQueue> queue;  ///< labelled "sordin.audio"
        std::shared_ptr<const Clock> clock;
        std::shared_ptr<SoundClassifying> classifier;
        std::shared_ptr<SpeechTranscribing> transcriber;
        std::shared_ptr<const TranscriptScoring> transcriptScorer;
        std::shared_ptr<AdScoring> scorer;
    };

    /// All there is to know about one hop.
    struct HopObservation {
        std::int64_t index;                     ///< hops processed before it
        std::optional<FrameFeatures> features;  ///< none on a silent hop
        DetectionSignals signals;
        AdVerdict verdict;
        float threshold;
        std::optional<AdSegmenter::Event> event;
        bool inAd;  ///< after the hop
        bool transcribing;
    };

    explicit DetectionPipeline(Parts parts);

    /// Callbacks, set before audio flows, called on the queue, which they must not hold up. Each may stay
    /// empty. A tick comes on every second hop and on those on which an ad starts or ends, after the call
    /// that says so.
    std::function<void(const PipelineTick&)> onTick;
    std::function<void()> onAdStart;
    std::function<void(const AdSummary&)> onAdEnd;
    /// For tools: called at the end of each hop.
    std::function<void(const HopObservation&)> onHop;

    [[nodiscard]] SerialQueue& queue() const { return *parts_.queue; }

    /// Sets the confidence that makes an ad (0 to 1; nothing starts above 1), the user's switch for
    /// transcription and the rules, all from the next hop on; an ad in progress goes on under them. Initially
    /// 0.575, on and the standard rules. Any thread.
    void configure(float threshold, bool transcriptionEnabled, const DetectorRules& rules = standardRules());

    /// Takes the next stretch of the stream (of captured audio: see pcmBuffer in captured_audio.h) and
    /// processes every hop that it completes. Only channel 0 is cut into hops; classifier and transcriber get
    /// the whole buffer unless it is silent. A buffer without frames or channels does not count as audio. On
    /// the queue only. The hops do not depend on how the stream is cut.
    void ingest(const PcmBuffer& buffer);

    /// Ends an ad in progress and returns to a clean listening state; learned ads and the time of the last
    /// one stay. Happens on the queue, later. Any thread.
    void stop();

    /// Ends an ad whose audio has not arrived for more than 3 s; call about once a second. Happens on the
    /// queue, later. Any thread.
    void watchdog();

    /// Forgets all learned ads. Happens on the queue, later. Any thread.
    void forgetLearnedAds();

    /// The ad in progress, or the last one if there is none, was no ad: forgets the fingerprints that have
    /// been learned since it began, and learns no more of it. Happens on the queue, later. Any thread.
    void disownAd();

private:
    struct Configuration {
        float threshold = 0.575F;
        bool transcriptionEnabled = true;
        DetectorRules rules;
    };

    /// Posts `action` for as long as the pipeline lives.
    void post(void (DetectionPipeline::*action)());
    void stopNow();
    void checkIngest();
    void forgetNow();
    void disownNow();

    void prepare(const AudioFormat& format);
    void feed(const PcmBuffer& buffer);
    [[nodiscard]] Configuration configuration();
    void processHop(std::span<const float> samples);
    /// Gathers the evidence of a hop that is not silent.
    [[nodiscard]] DetectionSignals gather(const FrameFeatures& features, bool transcriptionEnabled,
                                          double now);
    [[nodiscard]] float boundary(const SoundClassification& current, const Bands& bands);
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
    std::int64_t adHops_ = 0;      // hops inside the current ad that were not silent
    std::size_t learnedInAd_ = 0;  // fingerprints of the current or last ad
    bool adDisowned_ = false;      // the same ad was none
};

}  // namespace sordin
