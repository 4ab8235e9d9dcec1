// SPDX-License-Identifier: MIT
// Construction, settings and status of the engine.
#include "engine/sordin_engine.h"

#include "detection/sensitivity.h"
#include "engine/engine_log.h"
#include "support/numbers.h"

#include <utility>

namespace sordin {

Q_LOGGING_CATEGORY(engineLog, "sordin.engine", QtWarningMsg)

namespace {

constexpr auto enabledKey = "enabled";
constexpr auto sensitivityKey = "sensitivity";
constexpr auto duckPercentKey = "duckPercent";
constexpr auto transcriptionKey = "transcription";
constexpr auto tunedDetectionKey = "tunedDetection";
constexpr auto pauseInCallsKey = "pauseInCalls";
constexpr auto ignoredApplicationsKey = "ignoredApplications";
constexpr auto onboardedKey = "onboarded";

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
    watchStreams();
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
    parts_.streams->onChange({});
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
    tunedDetection_ = defaults.boolean(tunedDetectionKey).value_or(tunedDetection_);
    pauseInCalls_ = defaults.boolean(pauseInCallsKey).value_or(pauseInCalls_);
    QStringList ignored;
    for (const std::string& id :
         defaults.texts(ignoredApplicationsKey).value_or(std::vector<std::string>())) {
        ignored.append(QString::fromStdString(id));
    }
    keepIgnoredApplications(ignored);
    onboardingComplete_ = defaults.boolean(onboardedKey).value_or(onboardingComplete_);
}

void SordinEngine::pushConfig() {
    const float threshold = detectionThreshold(sensitivity_);
    publish(threshold_, static_cast<double>(threshold), &SordinEngine::thresholdChanged);
    constexpr double percent = 100;
    config_->setDuck(nearestFloat(duckPercent_ / percent));
    parts_.pipeline->configure(threshold, transcriptionEnabled_,
                               tunedDetection_ ? tunedRules() : standardRules());
}

void SordinEngine::setIsEnabled(bool enabled) {
    publish(isEnabled_, enabled, &SordinEngine::isEnabledChanged);
    parts_.defaults->set(enabledKey, enabled);
    publishCall();
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

void SordinEngine::setTunedDetection(bool tuned) {
    publish(tunedDetection_, tuned, &SordinEngine::tunedDetectionChanged);
    parts_.defaults->set(tunedDetectionKey, tuned);
    pushConfig();
}

void SordinEngine::setPauseInCalls(bool pause) {
    publish(pauseInCalls_, pause, &SordinEngine::pauseInCallsChanged);
    parts_.defaults->set(pauseInCallsKey, pause);
    pushLeftOut();
}

void SordinEngine::setIgnoredApplications(const QStringList& ids) {
    keepIgnoredApplications(ids);
    std::vector<std::string> kept;
    for (const QString& id : ignoredApplications_) {
        kept.push_back(id.toStdString());
    }
    parts_.defaults->set(ignoredApplicationsKey, std::move(kept));
    pushLeftOut();
    Q_EMIT ignoredApplicationsChanged();
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

}  // namespace sordin
