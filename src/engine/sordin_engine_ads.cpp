// SPDX-License-Identifier: MIT
// Handles the results of the pipeline: readings, ads, the history and fades.
#include "engine/engine_log.h"
#include "engine/sordin_engine.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

namespace sordin {

namespace {

constexpr double duckRamp = 0.15;    // seconds
constexpr double restoreRamp = 0.6;  // seconds
constexpr std::size_t trailLength = 180;
constexpr std::size_t historyLength = 500;

}  // namespace

void SordinEngine::wirePipeline() {
    DetectionPipeline& pipeline = *parts_.pipeline;
    // Fade on the pipeline's queue, within the hop that detected the ad, because the main thread may be busy.
    pipeline.onAdStart = [config = config_, volume = std::weak_ptr(parts_.volume),
                          started =
                              posting([](SordinEngine& engine, bool muted) { engine.adStarted(muted); })] {
        if (config->inCall()) {  // the audio is from before the call
            return;
        }
        const bool muted = !config->dryRun();
        if (const auto controller = volume.lock(); controller && muted) {
            controller->duck(config->duck(), duckRamp);
        }
        started(muted);
    };
    pipeline.onAdEnd = [volume = std::weak_ptr(parts_.volume),
                        ended = posting([](SordinEngine& engine, const AdSummary& summary) {
                            engine.adEnded(summary);
                        })](const AdSummary& summary) {
        if (const auto controller = volume.lock()) {
            controller->restore(restoreRamp);
        }
        ended(summary);
    };
    parts_.volume->onLowered(posting([](SordinEngine& engine, bool lowered) {
        engine.publish(engine.adFaded_, lowered, &SordinEngine::adFadedChanged);
    }));
    pipeline.onTick = posting([](SordinEngine& engine, const PipelineTick& tick) { engine.handle(tick); });
}

void SordinEngine::handle(const PipelineTick& tick) {
    if (!isEnabled_) {
        return;
    }
    publish(confidence_, static_cast<double>(tick.confidence), &SordinEngine::confidenceChanged);
    publish(threshold_, static_cast<double>(tick.threshold), &SordinEngine::thresholdChanged);
    publish(transcribing_, tick.transcribing, &SordinEngine::transcribingChanged);
    // Keep the last transcript until a new session has text.
    if (!tick.transcript.empty() || !tick.transcribing) {
        publish(transcript_, QString::fromStdString(tick.transcript), &SordinEngine::transcriptChanged);
    }
    std::vector<SignalReading> readings;
    for (const Contribution& each : tick.contributions) {
        readings.push_back({QString::fromUtf8(each.name.data(), static_cast<qsizetype>(each.name.size())),
                            static_cast<double>(each.value)});
    }
    setSignals(std::move(readings));
    trail_.push_back({QUuid::createUuid(), parts_.wallClock(), confidence_, threshold_});
    if (trail_.size() > trailLength) {
        trail_.erase(trail_.begin(), trail_.end() - trailLength);
    }
    Q_EMIT trailChanged();
}

void SordinEngine::adStarted(bool muted) {
    if (!isEnabled_ || !capturing_) {  // the capture has ended since the detection
        return;
    }
    adStart_ = now();
    adWasMuted_ = muted;
    publish(adActive_, true, &SordinEngine::adActiveChanged);
    setStatus(EngineStatus::Kind::mutingAd);
    publish(currentApp_, QString::fromStdString(parts_.inspector->likelySource()),
            &SordinEngine::currentAppChanged);
    qCInfo(engineLog).noquote() << "an ad began in" << currentApp_ << (muted ? "(faded)" : "(test mode)");
}

void SordinEngine::adEnded(const AdSummary& summary) {
    publish(adActive_, false, &SordinEngine::adActiveChanged);
    if (status_ == EngineStatus::Kind::mutingAd) {
        setStatus(EngineStatus::Kind::listening);
    }
    const auto start = std::exchange(adStart_, std::nullopt);
    if (!start) {
        return;
    }
    AdEvent event{QUuid::createUuid(),
                  start->date,
                  parts_.clock->now() - start->clock,
                  currentApp_.isEmpty() ? QStringLiteral("Unknown") : currentApp_,
                  static_cast<double>(summary.peakConfidence),
                  {},
                  adWasMuted_ ? AdEvent::Kind::muted : AdEvent::Kind::testOnly};
    for (const std::string& reason : summary.reasons) {
        event.reasons.append(QString::fromStdString(reason));
    }
    qCInfo(engineLog).noquote() << "an ad ended after" << QString::number(event.duration, 'f', 1)
                                << "s:" << event.reasons.join(", ");
    record(std::move(event));
}

void SordinEngine::setHistory(AdHistory history) {
    history_ = std::move(history);
    Q_EMIT historyChanged();
}

void SordinEngine::saveHistory() {
    parts_.historyFile->save(history_);
}

void SordinEngine::record(AdEvent event) {
    history_.insert(history_.begin(), std::move(event));
    if (history_.size() > historyLength) {
        history_.resize(historyLength);
    }
    Q_EMIT historyChanged();
    saveHistory();
}

void SordinEngine::simulate(double seconds) {
    if (simulating_ || adActive_ || !std::isfinite(seconds) || seconds < 0) {
        return;
    }
    publish(simulating_, true, &SordinEngine::simulatingChanged);
    const Moment start = now();
    const QString app = QString::fromStdString(parts_.inspector->likelySource());
    parts_.volume->duck(config_->duck(), duckRamp);
    constexpr double longest = 24 * 60 * 60;  // keeps the duration within the range of the timer
    const std::chrono::duration<double> length(std::min(seconds, longest));
    simulation_ = parts_.mainQueue->after(std::chrono::duration_cast<SerialQueue::Duration>(length),
                                          [this, start, app] {
                                              bringVolumeBack();
                                              record({QUuid::createUuid(),
                                                      start.date,
                                                      parts_.clock->now() - start.clock,
                                                      app,
                                                      1.0,
                                                      {QStringLiteral("Simulated")},
                                                      AdEvent::Kind::simulated});
                                              publish(simulating_, false, &SordinEngine::simulatingChanged);
                                          });
}

void SordinEngine::restoreVolume() {
    qCInfo(engineLog, "volume restore requested");
    // adActive_ and adFaded_ are posted separately: a fade without an active ad belongs to an ad that has
    // just begun or ended.
    if (adActive_ || (adFaded_ && !simulating_)) {
        parts_.pipeline->disownAd();
    }
    bringVolumeBack();
}

void SordinEngine::bringVolumeBack() {
    parts_.volume->restore(restoreRamp);
}

void SordinEngine::forgetLearnedAds() {
    parts_.pipeline->forgetLearnedAds();
}

void SordinEngine::applicationWillTerminate() {
    parts_.volume->refuseDucks();
    parts_.volume->restoreImmediately();
}

void SordinEngine::setSignals(std::vector<SignalReading> readings) {
    publish(signals_, std::move(readings), &SordinEngine::signalReadingsChanged);
}

}  // namespace sordin
