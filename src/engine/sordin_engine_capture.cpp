// SPDX-License-Identifier: MIT
// Starts and stops the capture, restarts it after a failure, and handles permissions.
#include "engine/sordin_engine.h"

#include <chrono>

namespace sordin {

namespace {

using namespace std::chrono_literals;

constexpr auto watchdogInterval = 1s;
constexpr auto retryDelay = 3s;

}  // namespace

void SordinEngine::watchCapture() {
    parts_.capture->onStop([stopped = posting([](SordinEngine& engine) { engine.captureStopped(); })](
                               const auto& /*failure*/) { stopped(); });
    parts_.capture->onReady(posting([](SordinEngine& engine) { engine.captureReady(); }));
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
    if (capturing_) {  // already running
        setStatus(adActive_ ? EngineStatus::Kind::mutingAd : EngineStatus::Kind::listening);
        return;
    }
    setStatus(EngineStatus::Kind::starting);
    startTask_ = ++starts_;
    parts_.capture->start(
        std::shared_ptr<SerialQueue>(parts_.pipeline, &parts_.pipeline->queue()),
        [pipeline = parts_.pipeline](const CapturedAudio& audio) {
            if (const auto buffer = pcmBuffer(audio)) {
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
        return;  // canceled
    }
    startTask_.reset();
    if (failure) {
        setStatus(EngineStatus::failed(QString::fromStdString(failure->description)));
        return;
    }
    capturing_ = true;
    setStatus(EngineStatus::Kind::listening);
    startWatchdog();
}

void SordinEngine::startWatchdog() {
    watchdog_ = parts_.mainQueue->every(watchdogInterval, [weak = std::weak_ptr(parts_.pipeline)] {
        if (const auto pipeline = weak.lock()) {
            pipeline->watchdog();
        }
    });
}

void SordinEngine::stopCapture() {
    startTask_.reset();
    retry_.cancel();
    watchdog_.cancel();
    capturing_ = false;
    // Stop the pipeline a second time after the last audio has been handled: a hop after the first stop may
    // have started an ad.
    parts_.capture->stop(posting([](SordinEngine& engine) {
        if (!engine.capturing_ && !engine.startTask_) {
            engine.parts_.pipeline->stop();
        }
    }));
    parts_.pipeline->stop();
    bringVolumeBack();
    setStatus(EngineStatus::Kind::disabled);
    publish(adActive_, false, &SordinEngine::adActiveChanged);
    publish(confidence_, 0.0, &SordinEngine::confidenceChanged);
    publish(transcribing_, false, &SordinEngine::transcribingChanged);
    setSignals({});
}

void SordinEngine::captureStopped() {
    capturing_ = false;
    if (!isEnabled_) {
        return;
    }
    parts_.pipeline->stop();
    publish(transcribing_, false, &SordinEngine::transcribingChanged);
    setStatus(EngineStatus::failed(QStringLiteral("Audio capture stopped. Retrying…")));
    retry_ = parts_.mainQueue->after(retryDelay, [this] {
        startCapture();
    });  // `this` is safe: timers run on this thread and are canceled by the destructor
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

bool SordinEngine::requestSpeechAccess() {
    if (!speechRequestPossible_) {
        return openSettings(QStringLiteral("Privacy_SpeechRecognition"));
    }
    if (parts_.transcriber->canRequestAuthorization()) {
        parts_.transcriber->requestAuthorization(
            posting([](SordinEngine& engine) { engine.refreshAccess(); }));
    } else {
        refreshAccess();
    }
    return true;
}

bool SordinEngine::openSettings(const QString& anchor) {
    return parts_.permissions->openSettings(anchor.toStdString());
}

}  // namespace sordin
