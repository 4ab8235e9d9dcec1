// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/session/application_service.h"

#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>
#include <QVariantMap>
#include <chrono>
#include <functional>
#include <optional>

namespace sordin {

/// The D-Bus interface org.sordin.Sordin1 for scripts, shortcuts and the actions of the desktop entry;
/// data/dbus describes it. It publishes the program's state and nothing of the captured audio. Main thread
/// only.
class ControlInterface : public QObject {
public:
    /// The name of the D-Bus interface.
    static constexpr auto name = "org.sordin.Sordin1";

    /// The values of the properties; data/dbus describes them.
    struct State {
        QString status;
        QString statusText;
        bool enabled = false;
        bool adActive = false;
        bool faded = false;
        QString source;
        double confidence = 0;
        bool tunedDetection = false;
        QString call;
        QStringList ignoredApplications;
    };
    /// No function may be empty.
    struct Program {
        std::function<State()> state;  ///< returns the current state
        std::function<void(bool)> setEnabled;
        std::function<void()> restoreVolume;
        std::function<void(bool)> setTunedDetection;
        std::function<void(const QStringList&)> setIgnoredApplications;
    };

    /// Adds the interface to `service`, which must outlive this object, and removes it in the destructor.
    /// Also sets the actions of the desktop entry. The program is enabled or disabled at most once in
    /// `switchInterval`; of several requests in that time, the last one counts. The property Enabled shows a
    /// request at once.
    ControlInterface(ApplicationService& service, Program program,
                     std::chrono::milliseconds switchInterval = std::chrono::milliseconds(200));
    ~ControlInterface() override;
    Q_DISABLE_COPY_MOVE(ControlInterface)

    /// Call this after the program's state may have changed. Clients get one signal for all changes since,
    /// but none if only the confidence changed.
    void stateChanged();

private:
    void tell();
    [[nodiscard]] bool enabled() const { return wanted_.value_or(program_.state().enabled); }
    void setEnabled(bool enabled);
    void switchNow();
    [[nodiscard]] QVariantMap properties() const;

    ApplicationService& service_;
    const Program program_;
    std::optional<bool> wanted_;  // the state to apply when pause_ ends
    QTimer pause_;                // runs until the next switch is allowed
    QVariantMap told_;
};

}  // namespace sordin
