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

/// What scripts, keys and the entries of the desktop's menu reach of the program: org.sordin.Sordin1, which
/// data/dbus describes. Tells what the program is doing now, and nothing of what it heard. Lives on the main
/// thread.
class ControlInterface : public QObject {
public:
    /// Its name on the bus.
    static constexpr auto name = "org.sordin.Sordin1";

    /// See the description.
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
    /// None may be empty.
    struct Program {
        std::function<State()> state;  ///< as it is now
        std::function<void(bool)> setEnabled;
        std::function<void()> restoreVolume;
        std::function<void(bool)> setTunedDetection;
        std::function<void(const QStringList&)> setIgnoredApplications;
    };

    /// Is there for its life; `service` must outlive it. Of the desktop's actions it takes those that it can
    /// do. The program is switched once in `switchInterval` at most; of what is asked for sooner the last
    /// word holds, and Enabled says it at once.
    ControlInterface(ApplicationService& service, Program program,
                     std::chrono::milliseconds switchInterval = std::chrono::milliseconds(200));
    ~ControlInterface() override;
    Q_DISABLE_COPY_MOVE(ControlInterface)

    /// To be called when the program's state may be another. Those who listen are told once for everything
    /// that changes at a time, and not of the confidence alone.
    void stateChanged();

private:
    void tell();
    [[nodiscard]] bool enabled() const { return wanted_.value_or(program_.state().enabled); }
    void setEnabled(bool enabled);
    void switchNow();
    [[nodiscard]] QVariantMap properties() const;

    ApplicationService& service_;
    const Program program_;
    std::optional<bool> wanted_;  // what the program has yet to be switched to
    QTimer pause_;                // until it may be switched again
    QVariantMap told_;
};

}  // namespace sordin
