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

/// The hub of the application: holds the settings and the live state, listens, has ads faded, remembers them.
/// There is one, for the life of the process; everything that is shown reads it.
///
/// Lives on the main thread, like all that it publishes: everything here is for that thread only. News from
/// other threads are posted to it, and dropped if the engine is gone by then.
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
    /// Everything the engine works with; none may be null or empty. The engine is the only one to use them.
    struct Parts {
        std::shared_ptr<SerialQueue> mainQueue;  ///< runs its work on the main thread
        std::shared_ptr<UserDefaults> defaults;
        std::shared_ptr<Permissions> permissions;
        std::shared_ptr<OnDeviceTranscriber> transcriber;  ///< the pipeline's
        std::shared_ptr<DetectionPipeline> pipeline;
        std::shared_ptr<SystemAudioCapture> capture;
        std::shared_ptr<ApplicationStreams> streams;
        std::shared_ptr<VolumeController> volume;
        std::shared_ptr<const AudioProcessInspector> inspector;
        std::shared_ptr<AdHistoryFile> historyFile;
        /// Says how long ads last. Should stand still while the computer sleeps: an ad that was under way
        /// then would otherwise have lasted all night.
        std::shared_ptr<const Clock> clock;
        std::function<ReferenceDate()> wallClock;  ///< says when they were
    };

    /// Reads settings and history, brings back a volume that an earlier run left down, and begins to listen
    /// if that is wanted and the first-run guide has been finished.
    explicit SordinEngine(Parts parts);
    ~SordinEngine() override;
    Q_DISABLE_COPY_MOVE(SordinEngine)

    // Settings. Every assignment is written to the user defaults and takes effect at once, whether or not it
    // changes the value.

    /// The master switch: listening and fading. Assigning it starts or stops the capture.
    [[nodiscard]] bool isEnabled() const { return isEnabled_; }
    void setIsEnabled(bool enabled);

    /// 0 to 1; the higher, the less it takes for an ad.
    [[nodiscard]] double sensitivity() const { return sensitivity_; }
    void setSensitivity(double sensitivity);

    /// What stays of the volume during an ad, in percent of the level before; 0 is silence.
    [[nodiscard]] double duckPercent() const { return duckPercent_; }
    void setDuckPercent(double percent);

    /// Ads are noticed and remembered, but the volume is left alone. Never kept: off at every start.
    [[nodiscard]] bool testMode() const { return testMode_; }
    void setTestMode(bool testMode);

    [[nodiscard]] bool transcriptionEnabled() const { return transcriptionEnabled_; }
    void setTranscriptionEnabled(bool enabled);

    /// Whether the detector follows the tuned rules instead of the standard ones (see DetectorRules).
    [[nodiscard]] bool tunedDetection() const { return tunedDetection_; }
    void setTunedDetection(bool tuned);

    /// Whether nothing is listened to, and nothing faded, while a call is on. The status stays what it would
    /// be otherwise.
    [[nodiscard]] bool pauseInCalls() const { return pauseInCalls_; }
    void setPauseInCalls(bool pause);

    /// The identifiers of applications that are never listened to, also of those that are not known here.
    /// Assigning drops empty, repeated and overlong (255 bytes) ones, and those beyond 256.
    [[nodiscard]] const QStringList& ignoredApplications() const { return ignoredApplications_; }
    void setIgnoredApplications(const QStringList& ids);
    /// The names by which these are shown, each once.
    [[nodiscard]] const QStringList& ignoredNames() const { return ignoredNames_; }
    /// The same for all applications that are shown by a name.
    Q_INVOKABLE void setIgnored(const QString& name, bool ignored);

    /// Whether the first-run guide has been finished.
    [[nodiscard]] bool onboardingComplete() const { return onboardingComplete_; }
    void setOnboardingComplete(bool complete);

    // Live state.

    [[nodiscard]] const EngineStatus& status() const { return status_; }
    /// The latest ad confidence, 0 to 1.
    [[nodiscard]] double confidence() const { return confidence_; }
    /// The confidence that starts an ad; a single-precision value.
    [[nodiscard]] double threshold() const { return threshold_; }
    [[nodiscard]] bool adActive() const { return adActive_; }
    /// A device is lower than it was, or muted, for an ad, real or simulated; as the volume controller has
    /// it.
    [[nodiscard]] bool adFaded() const { return adFaded_; }
    /// The application whose call is the reason why nothing is listened to; empty if there is none.
    [[nodiscard]] const QString& callApp() const { return callApp_; }
    /// The application taken as the source of the current or the last ad.
    [[nodiscard]] const QString& currentApp() const { return currentApp_; }
    /// The detector's signals, in its order.
    [[nodiscard]] const std::vector<SignalReading>& signalReadings() const { return signals_; }
    /// What was understood of the speech that is being or was last transcribed.
    [[nodiscard]] const QString& transcript() const { return transcript_; }
    [[nodiscard]] bool transcribing() const { return transcribing_; }
    /// The last three minutes of listening, newest last; at most 180 points.
    [[nodiscard]] const std::vector<TrailPoint>& trail() const { return trail_; }
    /// Whether the computer's sound may be heard.
    [[nodiscard]] bool screenAccess() const { return screenAccess_; }
    /// Whether speech may be transcribed.
    [[nodiscard]] bool speechAccess() const { return speechAccess_; }
    /// Whether asking for the latter leads anywhere; as found at creation.
    [[nodiscard]] bool speechRequestPossible() const { return speechRequestPossible_; }
    /// A simulated ad is under way.
    [[nodiscard]] bool simulating() const { return simulating_; }
    /// The symbol for the menu bar.
    [[nodiscard]] QString menuIcon() const;

    // What is remembered.

    /// Newest first, at most 500 since the last was added.
    [[nodiscard]] const AdHistory& history() const { return history_; }
    /// Replaces it, for now: saveHistory() does for good.
    void setHistory(AdHistory history);
    /// Writes the history to the disk, later.
    void saveHistory();
    [[nodiscard]] AdHistory realEvents() const { return sordin::realEvents(history_); }
    [[nodiscard]] std::vector<AppStat> appStats() const { return sordin::appStats(history_); }
    [[nodiscard]] TodaySummary todaySummary() const {
        return sordin::todaySummary(history_, parts_.wallClock());
    }

    // Operations.

    /// Begins to listen, if switched on. Does nothing while a start is under way.
    Q_INVOKABLE void startCapture();
    /// Stops listening; an ad in progress ends.
    Q_INVOKABLE void stopCapture();
    /// Asks for what `screenAccess` stands for; does not begin to listen.
    Q_INVOKABLE void requestScreenAccess();
    /// Asks for what `speechAccess` stands for, or opens the settings where there is no question to ask.
    /// False if neither is possible.
    Q_INVOKABLE bool requestSpeechAccess();
    /// Reads both permissions anew.
    Q_INVOKABLE void refreshAccess();
    /// See Permissions.
    Q_INVOKABLE bool openSettings(const QString& anchor);
    /// Pretends that an ad of `seconds` begins: the volume is really faded, whatever the switches say. Does
    /// nothing while a simulated or a real ad is under way, or if the time is no time.
    Q_INVOKABLE void simulate(double seconds);
    /// The user does not take the ad for one: brings the volume back until another ad begins, and forgets
    /// the fingerprints that were learned since it began. A simulated ad goes on without a fade.
    Q_INVOKABLE void restoreVolume();
    /// Forgets the ads that would be recognised by their sound.
    Q_INVOKABLE void forgetLearnedAds();
    /// Puts the volume back at once and returns when that is done: call last of all, before the process ends.
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
    /// A point was added at the end; the first one may have gone.
    void trailChanged();
    /// An event was added at the front, and the last one may have gone; or it is another.
    void historyChanged();
    void screenAccessChanged();
    void speechAccessChanged();
    void simulatingChanged();
    void menuIconChanged();

private:
    using Signal = void (SordinEngine::*)();

    /// Assigns, and tells if that changed anything.
    template <class Value>
    void publish(Value& field, Value value, Signal changed);
    /// What other threads may call: it posts `action(engine, arguments...)` to the main thread, for as long
    /// as the engine lives.
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

    /// A moment by both clocks.
    struct Moment {
        ReferenceDate date;
        double clock;
    };
    [[nodiscard]] Moment now() const { return {parts_.wallClock(), parts_.clock->now()}; }

    CallDetector calls_{parts_.mainQueue, [this](const std::optional<Call>& call) { callChanged(call); }};
    std::optional<Call> call_;
    std::optional<Moment> adStart_;
    bool adWasMuted_ = false;
    bool capturing_ = false;                  // a start has succeeded and the capture has not ended since
    std::uint64_t starts_ = 0;                // counts, so that the end of a cancelled one is known
    std::optional<std::uint64_t> startTask_;  // the start under way
    Timer watchdog_;
    Timer retry_;  // the start after the capture has stopped by itself
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
