// SPDX-License-Identifier: MIT
#include "engine/sordin_engine.h"

#include <QLoggingCategory>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

namespace sordin {

namespace {

// Says what happens, never what was heard. Quiet unless asked for.
Q_LOGGING_CATEGORY(engineLog, "sordin.engine", QtWarningMsg)

using namespace std::chrono_literals;

constexpr double duckRamp = 0.15;    // seconds
constexpr double restoreRamp = 0.6;  // seconds
constexpr std::size_t trailLength = 180;
constexpr std::size_t historyLength = 500;
constexpr auto watchdogInterval = 1s;
constexpr auto retryDelay = 3s;

constexpr auto enabledKey = "enabled";
constexpr auto sensitivityKey = "sensitivity";
constexpr auto duckPercentKey = "duckPercent";
constexpr auto transcriptionKey = "transcription";
constexpr auto onboardedKey = "onboarded";

/// The detector's threshold for a sensitivity: 0.8 at 0, 0.35 at 1.
float thresholdFor(double sensitivity) {
    constexpr double highest = 0.8;
    constexpr double slope = -0.45;
    return static_cast<float>(highest + sensitivity * slope);
}

const char* name(EngineStatus::Kind kind) {
    switch (kind) {
    case EngineStatus::Kind::failed:
        return "failed";
    case EngineStatus::Kind::disabled:
        return "disabled";
    case EngineStatus::Kind::needsPermission:
        return "needs permission";
    case EngineStatus::Kind::starting:
        return "starting";
    case EngineStatus::Kind::listening:
        return "listening";
    case EngineStatus::Kind::mutingAd:
        return "ad in progress";
    }
    return "";
}

}  // namespace

template <class Value>
void SordinEngine::publish(Value& field, Value value, Signal changed) {
    if (field != value) {
        field = std::move(value);
        Q_EMIT(this->*changed)();
    }
}

template <class Action>
auto SordinEngine::posting(Action action) {
    return [main = parts_.mainQueue, weak = std::weak_ptr(alive_), action](const auto&... arguments) {
        main->post([weak, action, arguments...] {
            if (const auto engine = weak.lock()) {
                action(**engine, arguments...);
            }
        });
    };
}

SordinEngine::SordinEngine(Parts parts) : parts_(std::move(parts)) {
    connect(this, &SordinEngine::adActiveChanged, this, &SordinEngine::menuIconChanged);
    connect(this, &SordinEngine::simulatingChanged, this, &SordinEngine::menuIconChanged);
    connect(this, &SordinEngine::isEnabledChanged, this, &SordinEngine::menuIconChanged);

    refreshAccess();
    speechRequestPossible_ = parts_.transcriber->canRequestAuthorization();
    readSettings();
    history_ = parts_.historyFile->load();
    parts_.volume->recoverFromCrash();
    wirePipeline();
    pushConfig();
    watchCapture();
    if (!onboardingComplete_) {
        setStatus(isEnabled_ ? EngineStatus::Kind::starting : EngineStatus::Kind::disabled);
    } else if (isEnabled_) {
        startCapture();
    } else {
        stopCapture();
    }
}

SordinEngine::~SordinEngine() {
    parts_.capture->onStop({});
    parts_.capture->onReady({});
    parts_.capture->stop([] {});
    parts_.pipeline->stop();
}

void SordinEngine::readSettings() {
    const UserDefaults& defaults = *parts_.defaults;
    isEnabled_ = defaults.boolean(enabledKey).value_or(isEnabled_);
    sensitivity_ = defaults.number(sensitivityKey).value_or(sensitivity_);
    duckPercent_ = defaults.number(duckPercentKey).value_or(duckPercent_);
    transcriptionEnabled_ = defaults.boolean(transcriptionKey).value_or(transcriptionEnabled_);
    onboardingComplete_ = defaults.boolean(onboardedKey).value_or(onboardingComplete_);
}

void SordinEngine::wirePipeline() {
    DetectionPipeline& pipeline = *parts_.pipeline;
    // The fade begins on the pipeline's queue, within the hop that noticed the ad: the main thread may be
    // busy.
    pipeline.onAdStart = [config = config_, volume = std::weak_ptr(parts_.volume),
                          started =
                              posting([](SordinEngine& engine, bool muted) { engine.adStarted(muted); })] {
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
    pipeline.onTick = posting([](SordinEngine& engine, const PipelineTick& tick) { engine.handle(tick); });
}

void SordinEngine::pushConfig() {
    const float threshold = thresholdFor(sensitivity_);
    publish(threshold_, static_cast<double>(threshold), &SordinEngine::thresholdChanged);
    constexpr double percent = 100;
    config_->setDuck(static_cast<float>(duckPercent_ / percent));
    parts_.pipeline->configure(threshold, transcriptionEnabled_);
}

void SordinEngine::watchCapture() {
    parts_.capture->onStop([stopped = posting([](SordinEngine& engine) { engine.captureStopped(); })](
                               const auto& /*failure*/) { stopped(); });
    parts_.capture->onReady(posting([](SordinEngine& engine) { engine.captureReady(); }));
}

void SordinEngine::setIsEnabled(bool enabled) {
    publish(isEnabled_, enabled, &SordinEngine::isEnabledChanged);
    parts_.defaults->set(enabledKey, enabled);
    if (enabled) {
        startCapture();
    } else {
        stopCapture();
    }
}

void SordinEngine::setSensitivity(double sensitivity) {
    publish(sensitivity_, sensitivity, &SordinEngine::sensitivityChanged);
    parts_.defaults->set(sensitivityKey, sensitivity);
    pushConfig();
}

void SordinEngine::setDuckPercent(double percent) {
    publish(duckPercent_, percent, &SordinEngine::duckPercentChanged);
    parts_.defaults->set(duckPercentKey, percent);
    pushConfig();
}

void SordinEngine::setTestMode(bool testMode) {
    publish(testMode_, testMode, &SordinEngine::testModeChanged);
    config_->setDryRun(testMode);
}

void SordinEngine::setTranscriptionEnabled(bool enabled) {
    publish(transcriptionEnabled_, enabled, &SordinEngine::transcriptionEnabledChanged);
    parts_.defaults->set(transcriptionKey, enabled);
    pushConfig();
    if (!enabled) {
        parts_.transcriber->rest();
    }
}

void SordinEngine::setOnboardingComplete(bool complete) {
    publish(onboardingComplete_, complete, &SordinEngine::onboardingCompleteChanged);
    parts_.defaults->set(onboardedKey, complete);
}

QString SordinEngine::menuIcon() const {
    if (adActive_ || simulating_) {
        return QStringLiteral("speaker.slash.fill");
    }
    return isEnabled_ ? QStringLiteral("waveform") : QStringLiteral("speaker.zzz");
}

void SordinEngine::setStatus(const EngineStatus& status) {
    if (status_ != status) {
        qCInfo(engineLog).noquote() << "status:" << name(status.kind()) << status.message();
    }
    publish(status_, status, &SordinEngine::statusChanged);
}

void SordinEngine::setSignals(std::vector<SignalReading> readings) {
    publish(signals_, std::move(readings), &SordinEngine::signalReadingsChanged);
}

void SordinEngine::handle(const PipelineTick& tick) {
    if (!isEnabled_) {
        return;
    }
    publish(confidence_, static_cast<double>(tick.confidence), &SordinEngine::confidenceChanged);
    publish(threshold_, static_cast<double>(tick.threshold), &SordinEngine::thresholdChanged);
    publish(transcribing_, tick.transcribing, &SordinEngine::transcribingChanged);
    // A session begins without a text: what the last one said stays until there is more.
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
    if (!isEnabled_) {
        return;
    }
    adStart_ = now();
    adWasMuted_ = muted;
    publish(adActive_, true, &SordinEngine::adActiveChanged);
    publish(adFaded_, muted || adFaded_, &SordinEngine::adFadedChanged);
    setStatus(EngineStatus::Kind::mutingAd);
    publish(currentApp_, QString::fromStdString(parts_.inspector->likelySource()),
            &SordinEngine::currentAppChanged);
    qCInfo(engineLog).noquote() << "an ad began in" << currentApp_ << (muted ? "(faded)" : "(watched only)");
}

void SordinEngine::adEnded(const AdSummary& summary) {
    publish(adActive_, false, &SordinEngine::adActiveChanged);
    publish(adFaded_, false, &SordinEngine::adFadedChanged);
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
    qCInfo(engineLog).noquote() << "an ad ended after" << event.duration << "s:" << event.reasons.join(", ");
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

void SordinEngine::startCapture() {
    if (!isEnabled_ || startTask_) {
        return;
    }
    retry_.cancel();
    refreshAccess();
    if (!screenAccess_) {
        setStatus(EngineStatus::Kind::needsPermission);
        return;
    }
    if (capturing_) {  // nothing to start
        setStatus(adActive_ ? EngineStatus::Kind::mutingAd : EngineStatus::Kind::listening);
        return;
    }
    setStatus(EngineStatus::Kind::starting);
    startTask_ = ++starts_;
    parts_.capture->start(
        std::shared_ptr<SerialQueue>(parts_.pipeline, &parts_.pipeline->queue()),
        [pipeline = parts_.pipeline](const CapturedAudio& audio) {
            if (const auto buffer = DetectionPipeline::pcmBuffer(audio)) {
                pipeline->ingest(*buffer);
            }
        },
        posting([start = starts_](SordinEngine& engine, const auto& failure) {
            engine.startFinished(start, failure);
        }));
}

void SordinEngine::startFinished(std::uint64_t start,
                                 const std::optional<SystemAudioCapture::Failure>& failure) {
    if (startTask_ != start) {
        return;  // cancelled
    }
    startTask_.reset();
    if (failure) {
        setStatus(EngineStatus::failed(QString::fromStdString(failure->description)));
        return;
    }
    capturing_ = true;
    setStatus(isEnabled_ ? EngineStatus::Kind::listening : EngineStatus::Kind::disabled);
    startWatchdog();
}

void SordinEngine::startWatchdog() {
    watchdog_ =
        parts_.mainQueue->every(watchdogInterval, [pipeline = parts_.pipeline] { pipeline->watchdog(); });
}

void SordinEngine::stopCapture() {
    startTask_.reset();
    retry_.cancel();
    watchdog_.cancel();
    capturing_ = false;
    parts_.capture->stop([] {});
    parts_.pipeline->stop();
    bringVolumeBack();
    setStatus(EngineStatus::Kind::disabled);
    publish(adActive_, false, &SordinEngine::adActiveChanged);
    publish(confidence_, 0.0, &SordinEngine::confidenceChanged);
    setSignals({});
}

void SordinEngine::captureStopped() {
    capturing_ = false;
    if (!isEnabled_) {
        return;
    }
    parts_.pipeline->stop();
    setStatus(EngineStatus::failed(QStringLiteral("Audio capture stopped. Retrying…")));
    retry_ = parts_.mainQueue->after(retryDelay, [this] {
        startCapture();
    });  // the engine outlives its timers' work: both are of this thread
}

void SordinEngine::captureReady() {
    const auto kind = status_.kind();
    if (onboardingComplete_ &&
        (kind == EngineStatus::Kind::failed || kind == EngineStatus::Kind::needsPermission)) {
        startCapture();
    }
}

void SordinEngine::refreshAccess() {
    publish(screenAccess_, parts_.permissions->screenCapturePreflight(), &SordinEngine::screenAccessChanged);
    publish(speechAccess_, parts_.transcriber->authorised(), &SordinEngine::speechAccessChanged);
}

void SordinEngine::requestScreenAccess() {
    parts_.permissions->requestScreenCapture();
    refreshAccess();
}

void SordinEngine::requestSpeechAccess() {
    if (!speechRequestPossible_) {
        openSettings(QStringLiteral("Privacy_SpeechRecognition"));
    } else if (parts_.transcriber->canRequestAuthorization()) {
        parts_.transcriber->requestAuthorization(
            posting([](SordinEngine& engine) { engine.refreshAccess(); }));
    } else {
        refreshAccess();
    }
}

void SordinEngine::openSettings(const QString& anchor) {
    parts_.permissions->openSettings(anchor.toStdString());
}

void SordinEngine::simulate(double seconds) {
    if (simulating_ || adActive_ || !std::isfinite(seconds) || seconds < 0) {
        return;
    }
    publish(simulating_, true, &SordinEngine::simulatingChanged);
    const Moment start = now();
    const QString app = QString::fromStdString(parts_.inspector->likelySource());
    parts_.volume->duck(config_->duck(), duckRamp);
    publish(adFaded_, true, &SordinEngine::adFadedChanged);
    constexpr double longest = 24 * 60 * 60;  // no timer runs longer, no simulation needs to
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
    qCInfo(engineLog, "the volume is asked back");
    bringVolumeBack();
}

void SordinEngine::bringVolumeBack() {
    parts_.volume->restore(restoreRamp);
    publish(adFaded_, false, &SordinEngine::adFadedChanged);
}

void SordinEngine::forgetLearnedAds() {
    parts_.pipeline->forgetLearnedAds();
}

void SordinEngine::applicationWillTerminate() {
    parts_.volume->refuseDucks();
    parts_.volume->restoreImmediately();
}

}  // namespace sordin
