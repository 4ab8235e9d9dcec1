// SPDX-License-Identifier: MIT
#pragma once

#include "detection/detection_pipeline.h"
#include "engine/ad_event.h"
#include "engine/ad_history_file.h"
#include "engine/ad_statistics.h"
#include "engine/engine_status.h"
#include "engine/live_readings.h"
#include "engine/runtime_config.h"
#include "platform/application_streams.h"
#include "platform/audio_process_inspector.h"
#include "platform/call_detector.h"
#include "platform/on_device_transcriber.h"
#include "platform/permissions.h"
#include "platform/system_audio_capture.h"
#include "platform/user_defaults.h"
#include "support/clock.h"
#include "support/serial_queue.h"
#include "volume/volume_controller.h"

#include <QObject>
#include <QString>
#include <QStringList>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace sordin {

/// The central object of the application: holds the settings and the live state, runs capture and detection,
/// fades ads and records them. One instance exists for the life of the process; all views read it.
///
/// Main thread only. Callbacks on other threads are posted to the main thread and dropped after the engine's
/// destruction.
class SordinEngine final : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isEnabled READ isEnabled WRITE setIsEnabled NOTIFY isEnabledChanged)
    Q_PROPERTY(double sensitivity READ sensitivity WRITE setSensitivity NOTIFY sensitivityChanged)
    Q_PROPERTY(double duckPercent READ duckPercent WRITE setDuckPercent NOTIFY duckPercentChanged)
    Q_PROPERTY(bool testMode READ testMode WRITE setTestMode NOTIFY testModeChanged)
    Q_PROPERTY(bool transcriptionEnabled READ transcriptionEnabled WRITE setTranscriptionEnabled NOTIFY
                   transcriptionEnabledChanged)
    Q_PROPERTY(bool tunedDetection READ tunedDetection WRITE setTunedDetection NOTIFY tunedDetectionChanged)
    Q_PROPERTY(bool pauseInCalls READ pauseInCalls WRITE setPauseInCalls NOTIFY pauseInCallsChanged)
    Q_PROPERTY(QStringList ignoredApplications READ ignoredApplications WRITE setIgnoredApplications NOTIFY
                   ignoredApplicationsChanged)
    Q_PROPERTY(bool onboardingComplete READ onboardingComplete WRITE setOnboardingComplete NOTIFY
                   onboardingCompleteChanged)
    Q_PROPERTY(double confidence READ confidence NOTIFY confidenceChanged)
    Q_PROPERTY(double threshold READ threshold NOTIFY thresholdChanged)
    Q_PROPERTY(bool adActive READ adActive NOTIFY adActiveChanged)
    Q_PROPERTY(bool adFaded READ adFaded NOTIFY adFadedChanged)
    Q_PROPERTY(QString callApp READ callApp NOTIFY callAppChanged)
    Q_PROPERTY(QString currentApp READ currentApp NOTIFY currentAppChanged)
    Q_PROPERTY(QString transcript READ transcript NOTIFY transcriptChanged)
    Q_PROPERTY(bool transcribing READ transcribing NOTIFY transcribingChanged)
    Q_PROPERTY(bool screenAccess READ screenAccess NOTIFY screenAccessChanged)
    Q_PROPERTY(bool speechAccess READ speechAccess NOTIFY speechAccessChanged)
    Q_PROPERTY(bool speechRequestPossible READ speechRequestPossible CONSTANT)
    Q_PROPERTY(bool simulating READ simulating NOTIFY simulatingChanged)
    Q_PROPERTY(QString menuIcon READ menuIcon NOTIFY menuIconChanged)

public:
    /// The engine's collaborators; none may be null or empty. Only the engine may use them.
    struct Parts {
        std::shared_ptr<SerialQueue> mainQueue;  ///< runs work on the main thread
        std::shared_ptr<UserDefaults> defaults;
        std::shared_ptr<Permissions> permissions;
        std::shared_ptr<OnDeviceTranscriber> transcriber;  ///< also the pipeline's
        std::shared_ptr<DetectionPipeline> pipeline;
        std::shared_ptr<SystemAudioCapture> capture;
        std::shared_ptr<ApplicationStreams> streams;
        std::shared_ptr<VolumeController> volume;
        std::shared_ptr<const AudioProcessInspector> inspector;
        std::shared_ptr<AdHistoryFile> historyFile;
        /// Measures the duration of ads. Should not advance during suspend; otherwise an ad in progress would
        /// seem to last all night.
        std::shared_ptr<const Clock> clock;
        std::function<ReferenceDate()> wallClock;  ///< dates the ads
    };

    /// Reads the settings and the history, restores a volume that an earlier run left faded, and starts
    /// listening if it is enabled and onboarding is complete.
    explicit SordinEngine(Parts parts);
    ~SordinEngine() override;
    Q_DISABLE_COPY_MOVE(SordinEngine)

    // Settings. Every assignment is written to the user defaults and takes effect immediately, even if the
    // value does not change.

    /// Master switch for listening and fading. Assigning it starts or stops the capture.
    [[nodiscard]] bool isEnabled() const { return isEnabled_; }
    void setIsEnabled(bool enabled);

    /// 0 to 1; higher values lower the detection threshold.
    [[nodiscard]] double sensitivity() const { return sensitivity_; }
    void setSensitivity(double sensitivity);

    /// Volume during an ad in percent of the volume before; 0 is silence.
    [[nodiscard]] double duckPercent() const { return duckPercent_; }
    void setDuckPercent(double percent);

    /// In test mode, ads are detected and recorded but not faded. Not stored: off at every start.
    [[nodiscard]] bool testMode() const { return testMode_; }
    void setTestMode(bool testMode);

    /// Whether speech may be transcribed to find advertising phrases.
    [[nodiscard]] bool transcriptionEnabled() const { return transcriptionEnabled_; }
    void setTranscriptionEnabled(bool enabled);

    /// Whether the detector uses the tuned rules instead of the standard rules (see DetectorRules).
    [[nodiscard]] bool tunedDetection() const { return tunedDetection_; }
    void setTunedDetection(bool tuned);

    /// Whether listening and fading pause during calls. A pause does not change the status.
    [[nodiscard]] bool pauseInCalls() const { return pauseInCalls_; }
    void setPauseInCalls(bool pause);

    /// Identifiers of the applications that are never listened to; they need not be installed. Assigning
    /// drops empty and repeated identifiers, those longer than 255 bytes, and all after the first 256.
    [[nodiscard]] const QStringList& ignoredApplications() const { return ignoredApplications_; }
    void setIgnoredApplications(const QStringList& ids);
    /// The display names of these applications, without duplicates.
    [[nodiscard]] const QStringList& ignoredNames() const { return ignoredNames_; }
    /// Adds or removes all applications with this display name.
    Q_INVOKABLE void setIgnored(const QString& name, bool ignored);

    /// Whether the user has completed the onboarding.
    [[nodiscard]] bool onboardingComplete() const { return onboardingComplete_; }
    void setOnboardingComplete(bool complete);

    // Live state.

    [[nodiscard]] const EngineStatus& status() const { return status_; }
    /// The latest ad confidence, 0 to 1.
    [[nodiscard]] double confidence() const { return confidence_; }
    /// The detection threshold, 0 to 1; a single-precision value.
    [[nodiscard]] double threshold() const { return threshold_; }
    [[nodiscard]] bool adActive() const { return adActive_; }
    /// Whether the volume controller has faded or muted a device for a real or simulated ad, and has not
    /// begun to restore it.
    [[nodiscard]] bool adFaded() const { return adFaded_; }
    /// The application whose call pauses listening; empty if listening is not paused.
    [[nodiscard]] const QString& callApp() const { return callApp_; }
    /// The likely source application of the current or the last ad.
    [[nodiscard]] const QString& currentApp() const { return currentApp_; }
    /// The shares of the detector's signals, in the detector's order.
    [[nodiscard]] const std::vector<SignalReading>& signalReadings() const { return signals_; }
    /// The transcript of the current or the last transcription session.
    [[nodiscard]] const QString& transcript() const { return transcript_; }
    [[nodiscard]] bool transcribing() const { return transcribing_; }
    /// The last 180 readings (three minutes of listening), newest last.
    [[nodiscard]] const std::vector<TrailPoint>& trail() const { return trail_; }
    /// Whether the system permits audio capture.
    [[nodiscard]] bool screenAccess() const { return screenAccess_; }
    /// Whether the system permits transcription.
    [[nodiscard]] bool speechAccess() const { return speechAccess_; }
    /// Whether the system can show a request for the transcription permission. Determined once, at
    /// construction.
    [[nodiscard]] bool speechRequestPossible() const { return speechRequestPossible_; }
    /// Whether a simulated ad is in progress.
    [[nodiscard]] bool simulating() const { return simulating_; }
    /// The name of the menu bar symbol.
    [[nodiscard]] QString menuIcon() const;

    // History and statistics.

    /// Newest first. Recording an ad truncates it to 500 ads.
    [[nodiscard]] const AdHistory& history() const { return history_; }
    /// Replaces the history in memory only; see saveHistory().
    void setHistory(AdHistory history);
    /// Writes the history to its file asynchronously.
    void saveHistory();
    [[nodiscard]] AdHistory realEvents() const { return sordin::realEvents(history_); }
    [[nodiscard]] std::vector<AppStat> appStats() const { return sordin::appStats(history_); }
    [[nodiscard]] TodaySummary todaySummary() const {
        return sordin::todaySummary(history_, parts_.wallClock());
    }

    // Operations.

    /// Starts listening if it is enabled and permitted. Does nothing while a start is in progress.
    Q_INVOKABLE void startCapture();
    /// Stops listening, ends an ad in progress and restores the volume.
    Q_INVOKABLE void stopCapture();
    /// Requests the permission for audio capture. Does not start listening.
    Q_INVOKABLE void requestScreenAccess();
    /// Requests the permission for transcription, or opens the system settings if the system cannot show a
    /// request. Returns false if neither is possible.
    Q_INVOKABLE bool requestSpeechAccess();
    /// Updates `screenAccess` and `speechAccess`.
    Q_INVOKABLE void refreshAccess();
    /// See Permissions::openSettings().
    Q_INVOKABLE bool openSettings(const QString& anchor);
    /// Simulates an ad of `seconds` (at most 24 h): fades the volume even if the engine is disabled or in
    /// test mode. Does nothing during a real or simulated ad, or if `seconds` is negative or not finite.
    Q_INVOKABLE void simulate(double seconds);
    /// Treats the ad in progress as a false detection: restores the volume until the next ad, and forgets the
    /// fingerprints learned from it. A simulated ad goes on without a fade.
    Q_INVOKABLE void restoreVolume();
    /// Forgets all learned fingerprints of ads.
    Q_INVOKABLE void forgetLearnedAds();
    /// Restores the volume immediately and blocks until that is done. Call as the last operation before the
    /// process ends.
    void applicationWillTerminate();

Q_SIGNALS:
    void isEnabledChanged();
    void sensitivityChanged();
    void duckPercentChanged();
    void testModeChanged();
    void transcriptionEnabledChanged();
    void tunedDetectionChanged();
    void pauseInCallsChanged();
    void ignoredApplicationsChanged();
    void onboardingCompleteChanged();
    void statusChanged();
    void confidenceChanged();
    void thresholdChanged();
    void adActiveChanged();
    void adFadedChanged();
    void callAppChanged();
    void currentAppChanged();
    void signalReadingsChanged();
    void transcriptChanged();
    void transcribingChanged();
    /// A point was added at the end; points may have been removed at the beginning.
    void trailChanged();
    /// An event was added at the beginning and the last one may have been removed, or the whole history was
    /// replaced.
    void historyChanged();
    void screenAccessChanged();
    void speechAccessChanged();
    void simulatingChanged();
    void menuIconChanged();

private:
    using Signal = void (SordinEngine::*)();

    /// Assigns `value` and emits `changed` if the field was different.
    template <class Value>
    void publish(Value& field, Value value, Signal changed);
    /// Returns a function for other threads that posts `action(engine, arguments...)` to the main thread. The
    /// action is skipped if the engine has been destroyed.
    template <class Action>
    [[nodiscard]] auto posting(Action action);

    void readSettings();
    void wirePipeline();
    void pushConfig();
    void watchCapture();
    void watchStreams();
    void callChanged(const std::optional<Call>& call);
    void keepIgnoredApplications(const QStringList& ids);
    void pushLeftOut();
    void publishCall();

    void handle(const PipelineTick& tick);
    void adStarted(bool muted);
    void adEnded(const AdSummary& summary);
    void startFinished(std::uint64_t start, const std::optional<SystemAudioCapture::Failure>& failure);
    void captureStopped();
    void captureReady();
    void startWatchdog();
    void bringVolumeBack();
    void setStatus(const EngineStatus& status);
    void setSignals(std::vector<SignalReading> readings);
    void record(AdEvent event);

    const Parts parts_;
    const std::shared_ptr<RuntimeConfig> config_ = std::make_shared<RuntimeConfig>();
    const std::shared_ptr<SordinEngine*> alive_ = std::make_shared<SordinEngine*>(this);

    bool isEnabled_ = true;
    double sensitivity_ = 0.5;
    double duckPercent_ = 0;
    bool testMode_ = false;
    bool transcriptionEnabled_ = true;
    bool tunedDetection_ = false;
    bool pauseInCalls_ = true;
    QStringList ignoredApplications_;
    QStringList ignoredNames_;
    bool onboardingComplete_ = false;
    EngineStatus status_ = EngineStatus::Kind::disabled;
    double confidence_ = 0;
    double threshold_ = 0.575;
    bool adActive_ = false;
    bool adFaded_ = false;
    QString callApp_;
    QString currentApp_;
    std::vector<SignalReading> signals_;
    QString transcript_;
    bool transcribing_ = false;
    std::vector<TrailPoint> trail_;
    AdHistory history_;
    bool screenAccess_ = false;
    bool speechAccess_ = false;
    bool speechRequestPossible_ = false;
    bool simulating_ = false;

    /// A time in both clocks.
    struct Moment {
        ReferenceDate date;
        double clock;
    };
    [[nodiscard]] Moment now() const { return {parts_.wallClock(), parts_.clock->now()}; }

    CallDetector calls_{parts_.mainQueue, [this](const std::optional<Call>& call) { callChanged(call); }};
    std::optional<Call> call_;
    std::optional<Moment> adStart_;
    bool adWasMuted_ = false;
    bool capturing_ = false;                  // a start has succeeded, and the capture has not ended since
    std::uint64_t starts_ = 0;                // number of starts; distinguishes the result of a canceled one
    std::optional<std::uint64_t> startTask_;  // the start in progress
    Timer watchdog_;
    Timer retry_;  // until the restart of a capture that ended by itself
    Timer simulation_;
};

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

}  // namespace sordin
