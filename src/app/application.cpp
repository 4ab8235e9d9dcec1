// SPDX-License-Identifier: MIT
#include "app/application.h"

#include "app/silent_tagger.h"
#include "classifier/network_sound_tagger.h"
#include "classifier/sound_model_file.h"
#include "detection/heuristic_ad_scorer.h"
#include "detection/keyword_transcript_scorer.h"
#include "platform/linux/session/linux_permissions.h"
#include "platform/linux/speech/linux_speech_recogniser.h"
#include "platform/linux/storage/file_user_defaults.h"
#include "platform/linux/storage/user_folders.h"
#include "platform/loopback_capture.h"
#include "platform/sound_analysis_classifier.h"
#include "support/asio_serial_queue.h"
#include "support/own_files.h"
#include "support/system_clock.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QLoggingCategory>
#include <chrono>
#include <utility>

namespace sordin {

namespace {

Q_LOGGING_CATEGORY(appLog, "sordin.app", QtWarningMsg)

using namespace std::chrono_literals;

constexpr auto listingDeadline = 2s;
constexpr auto flushDeadline = 500ms;

std::unique_ptr<SoundTagger> soundTagger(const std::filesystem::path& program) {
    const auto path = findDataFile(program, "sound-model.bin");
    if (!path) {
        qCWarning(appLog, "no sound model found, so ads cannot be recognized");
        return std::make_unique<SilentTagger>();
    }
    try {
        return std::make_unique<NetworkSoundTagger>(loadSoundModel(*path));
    } catch (const SoundModelError& error) {
        qCWarning(appLog, "%s", error.what());
        return std::make_unique<SilentTagger>();
    }
}

/// A clock that stops while the computer sleeps.
std::shared_ptr<const Clock> awakeClock() {
    const auto seconds = [](auto sinceEpoch) { return std::chrono::duration<double>(sinceEpoch).count(); };
    return std::make_shared<SystemClock>(
        [seconds] { return seconds(std::chrono::system_clock::now().time_since_epoch()); },
        [seconds] { return seconds(std::chrono::steady_clock::now().time_since_epoch()); });
}

}  // namespace

Application::Application(const std::filesystem::path& program, std::shared_ptr<VolumeGuard> guard)
    : audio_(std::make_shared<LinuxAudio>()),
      directory_(DesktopEntries::ofUser(), "/proc",
                 [audio = audio_](auto processId) { return audio->portalApplication(processId); }) {
    // Restores a volume that a crash left down at once, if its device is known by now.
    audio_->waitUntilKnown(listingDeadline);
    createEngine(program, std::move(guard));
}

void Application::createEngine(const std::filesystem::path& program, std::shared_ptr<VolumeGuard> guard) {
    const auto queue = [](const char* label, QualityOfService quality) {
        return std::make_shared<AsioSerialQueue>(label, quality);
    };
    auto defaults = std::make_shared<FileUserDefaults>(configFolder(),
                                                       queue("sordin.defaults", QualityOfService::utility));
    if (const auto aside = defaults->settingsAside(); !aside.empty()) {
        qCWarning(appLog, "the settings could not be read; they are reset, and the old file is now %s",
                  aside.c_str());
    }
    auto transcriber = std::make_shared<OnDeviceTranscriber>(
        linuxSpeechRecogniser(queue("sordin.speech", QualityOfService::userInitiated), program));
    auto pipeline = std::make_shared<DetectionPipeline>(DetectionPipeline::Parts{
        audioQueue_, std::make_shared<SystemClock>(),
        std::make_shared<SoundAnalysisClassifier>(soundTagger(program)), transcriber,
        std::make_shared<KeywordTranscriptScorer>(), std::make_shared<HeuristicAdScorer>()});
    auto capture = std::make_shared<LoopbackCapture>(queue("sordin.capture", QualityOfService::userInitiated),
                                                     audio_->loopbackSource());
    auto volume =
        std::make_shared<VolumeController>(queue("sordin.volume", QualityOfService::userInteractive),
                                           audio_->objects(), defaults, std::move(guard));
    engine_ = std::make_unique<SordinEngine>(SordinEngine::Parts{
        mainQueue_, std::move(defaults), std::make_shared<LinuxPermissions>(QDBusConnection::sessionBus()),
        std::move(transcriber), std::move(pipeline), std::move(capture), audio_->streams(), std::move(volume),
        std::make_shared<AudioProcessInspector>(*audio_->objects(), directory_),
        std::make_shared<AdHistoryFile>(dataFolder() / "history.json",
                                        queue("sordin.history", QualityOfService::utility)),
        awakeClock(), currentReferenceDate});
}

Application::~Application() {
    engine_->applicationWillTerminate();
    // The restore is complete only when the server has processed it.
    if (!audio_->objects()->flush(flushDeadline)) {
        qCWarning(appLog, "the audio server did not confirm the volume in time");
    }
    // This ends an ad in progress and records it.
    engine_->stopCapture();
    audioQueue_->sync([] {});
    QCoreApplication::sendPostedEvents();
    engine_.reset();
}

}  // namespace sordin
