// SPDX-License-Identifier: MIT
#include "detection/detection_pipeline.h"

#include "detection/sample_math.h"
#include "support/fatal.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace sordin {

namespace {

constexpr float silenceFloor = 0.0001F;  // root mean square, -80 dB full scale

}  // namespace

DetectionPipeline::DetectionPipeline(Parts parts)
    : parts_(std::move(parts)),
      sessions_(parts_.transcriber, parts_.transcriptScorer),
      lastIngest_(parts_.clock->now()) {}

void DetectionPipeline::configure(float threshold, bool transcriptionEnabled, const DetectorRules& rules) {
    const std::scoped_lock lock(cfgLock_);
    configuration_ = {threshold, transcriptionEnabled, rules};
}

DetectionPipeline::Configuration DetectionPipeline::configuration() {
    const std::scoped_lock lock(cfgLock_);
    return configuration_;
}

void DetectionPipeline::stop() {
    post(&DetectionPipeline::stopNow);
}

void DetectionPipeline::watchdog() {
    post(&DetectionPipeline::checkIngest);
}

void DetectionPipeline::forgetLearnedAds() {
    post(&DetectionPipeline::forgetNow);
}

void DetectionPipeline::disownAd() {
    post(&DetectionPipeline::disownNow);
}

void DetectionPipeline::post(void (DetectionPipeline::*action)()) {
    parts_.queue->post([weak = weak_from_this(), action] {
        if (const auto self = weak.lock()) {
            ((*self).*action)();
        }
    });
}

void DetectionPipeline::stopNow() {
    if (segmenter_.inAd()) {
        const AdSummary summary = segmenter_.forceEnd();
        if (onAdEnd) {
            onAdEnd(summary);
        }
    }
    sessions_.stop();
    parts_.classifier->reset();
    parts_.scorer->reset();
    change_.clear();
    repetition_.clearRecent();
    hop_.clear();
    preparedFormat_.reset();
    avgDb_.reset();
}

void DetectionPipeline::checkIngest() {
    constexpr double longestGap = 3;
    const double now = parts_.clock->now();
    if (!segmenter_.inAd() || !(now - lastIngest_ > longestGap)) {
        return;
    }
    const AdSummary summary = segmenter_.forceEnd();
    lastAdEnd_ = now;
    if (onAdEnd) {
        onAdEnd(summary);
    }
}

void DetectionPipeline::forgetNow() {
    repetition_.forget();
    learnedInAd_ = 0;
}

void DetectionPipeline::disownNow() {
    repetition_.forgetLast(std::exchange(learnedInAd_, 0));
    adDisowned_ = true;
}

void DetectionPipeline::ingest(const PcmBuffer& buffer) {
    const auto samples = buffer.channel(0);
    if (samples.empty()) {
        return;
    }
    if (preparedFormat_ != buffer.format()) {
        prepare(buffer.format());
    }
    lastIngest_ = parts_.clock->now();
    if (rootMeanSquare(samples) > silenceFloor) {
        feed(buffer);
    }
    const auto frames = static_cast<std::int64_t>(samples.size());
    if (framesSeen_ > std::numeric_limits<std::int64_t>::max() - frames) {
        fatal("the count of frames overflowed");
    }
    framesSeen_ += frames;
    hop_.append(samples, [this](std::span<const float> hop) { processHop(hop); });
}

void DetectionPipeline::prepare(const AudioFormat& format) {
    preparedFormat_ = format;
    hop_.setSampleRate(format.sampleRate);
    // Detection goes on without scores if the classifier does not support the format.
    static_cast<void>(parts_.classifier->prepare(format));
    parts_.classifier->countHopsFrom(framesSeen_ - static_cast<std::int64_t>(hop_.waiting()));
}

void DetectionPipeline::feed(const PcmBuffer& buffer) {
    parts_.classifier->analyze(buffer, framesSeen_);
    if (parts_.transcriber->active()) {
        parts_.transcriber->append(buffer);
    }
}

void DetectionPipeline::processHop(std::span<const float> samples) {
    // The segmenter always counts 0.5 s, even for a hop that a change of rate made longer or shorter.
    constexpr double hopSeconds = 0.5;
    const auto [threshold, transcriptionEnabled, rules] = configuration();
    sessions_.setRules(rules);
    parts_.scorer->setRules(rules);
    segmenter_.setRules(rules);
    const double now = parts_.clock->now();

    std::optional<FrameFeatures> features;
    DetectionSignals signals;
    signals.silent = rootMeanSquare(samples) < silenceFloor;
    if (!signals.silent) {
        features = extractor_.extract(samples);
        signals = gather(*features, transcriptionEnabled, now);
    }
    if (lastAdEnd_) {
        signals.sinceLastAd = now - *lastAdEnd_;
    }

    const AdVerdict verdict = parts_.scorer->update(signals);
    lastConfidence_ = verdict.confidence;
    const auto event = segmenter_.update(verdict.confidence, threshold, hopSeconds, verdict.contributions);
    if (event) {
        announce(*event, now);
    }

    if (hopCount_ == std::numeric_limits<std::int64_t>::max()) {
        fatal("the count of hops overflowed");
    }
    ++hopCount_;
    if (onTick && (hopCount_ % 2 == 0 || event)) {
        tick(signals, verdict, threshold);
    }
    if (onHop) {
        onHop({hopCount_ - 1, features, signals, verdict, threshold, event, segmenter_.inAd(),
               parts_.transcriber->active()});
    }
}

DetectionSignals DetectionPipeline::gather(const FrameFeatures& features, bool transcriptionEnabled,
                                           double now) {
    const SoundClassification current = parts_.classifier->current();
    DetectionSignals signals;
    signals.music = current.music;
    signals.speech = current.speech;
    signals.jingle = current.jingle;
    signals.boundary = boundary(current, features.bands);
    signals.repetition = repetition_.push(features.bands);
    signals.loudnessRise = loudnessRise(features.db);
    sessions_.manage({now, current.speech, lastConfidence_, segmenter_.inAd(), transcriptionEnabled});
    signals.keyword = sessions_.takeKeywordLevel();
    signals.keywordActive = transcriptionEnabled && parts_.transcriber->available();
    if (segmenter_.inAd()) {
        learnFromAd();
    }
    return signals;
}

float DetectionPipeline::boundary(const SoundClassification& current, const Bands& bands) {
    const float jump =
        std::abs(current.music - prevClass_.music) + std::abs(current.speech - prevClass_.speech);
    prevClass_ = current;
    return clampToUnit(std::max(change_.update(bands), 0.8F * jump));
}

float DetectionPipeline::loudnessRise(float db) {
    if (!avgDb_) {
        avgDb_ = db;
        return 0;
    }
    const float rise = db - *avgDb_;
    avgDb_ = 0.99F * *avgDb_ + 0.01F * db;
    return rise;
}

void DetectionPipeline::learnFromAd() {
    constexpr std::int64_t hopsBetween = 8;  // a fingerprint covers eight hops
    ++adHops_;
    if (adHops_ % hopsBetween == 0 && !adDisowned_ && repetition_.learnCurrent()) {
        ++learnedInAd_;
    }
}

void DetectionPipeline::announce(const AdSegmenter::Event& event, double now) {
    if (const auto* ended = std::get_if<AdSegmenter::Ended>(&event)) {
        lastAdEnd_ = now;
        sessions_.adEnded();
        if (onAdEnd) {
            onAdEnd(ended->summary);
        }
        return;
    }
    adHops_ = 0;
    learnedInAd_ = 0;
    adDisowned_ = false;
    if (onAdStart) {
        onAdStart();
    }
}

void DetectionPipeline::tick(const DetectionSignals& signals, const AdVerdict& verdict,
                             float threshold) const {
    onTick({verdict.confidence, threshold, segmenter_.inAd(), signals.silent, signals.music, signals.speech,
            verdict.contributions, parts_.transcriber->text(), parts_.transcriber->active()});
}

}  // namespace sordin
