// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/session/dbus_object.h"

#include <QDBusConnection>
#include <QString>
#include <QTimer>
#include <functional>
#include <map>
#include <utility>

namespace sordin {

/// The program's name on the session bus, which keeps a second instance from starting, and the interface
/// org.freedesktop.Application, through which launchers activate the program. Main thread only.
class ApplicationService {
public:
    /// The application identifier; also the name of the desktop entry and the icon.
    static constexpr auto id = "org.sordin.Sordin";
    /// The path of the D-Bus object.
    static constexpr auto path = "/org/sordin/Sordin";

    enum class Name {
        ours,   ///< this process owns the name
        taken,  ///< another process owns the name
        none    ///< there is no session bus
    };

    /// An action of the desktop entry. `starts` is true if the bus started the program for this action.
    using Action = std::function<void(bool starts)>;

    /// Requests the bus name. `activated` is called on the main thread with the desktop's activation token,
    /// which lets a window of this program come to the front; it may be empty. Set `startedByBus` if the bus
    /// started the program to deliver a call. If the bus is replaced by a new one at the same address, the
    /// name and the object are registered again a few seconds later.
    ApplicationService(QDBusConnection bus, std::function<void(const QString& token)> activated,
                       bool startedByBus = false);
    ~ApplicationService();
    ApplicationService(const ApplicationService&) = delete;
    ApplicationService& operator=(const ApplicationService&) = delete;

    [[nodiscard]] Name name() const { return name_; }

    /// The object to which the program adds its interfaces.
    [[nodiscard]] DbusObject& object() { return object_; }

    /// Sets the actions by their names in the desktop entry. No action may be empty.
    void setActions(std::map<QString, Action> actions) { actions_ = std::move(actions); }

    /// Activates the process that owns the name, with this process's activation token. Returns false if that
    /// does not reply within ten seconds.
    [[nodiscard]] bool activateOther();
    /// Returns whether the owner of the name is this program in another process. Waits up to ten seconds.
    [[nodiscard]] bool otherAnswers() const;

private:
    [[nodiscard]] DbusObject::Interface interface();
    void takeName();
    void reconnect();
    [[nodiscard]] QDBusMessage activateAction(const QDBusMessage& call);

    QDBusConnection bus_;
    DbusObject object_;
    const std::function<void(const QString& token)> activated_;
    const bool startedByBus_;
    std::map<QString, Action> actions_;
    Name name_ = Name::none;
    int connections_ = 0;  // the number of reconnections
    QTimer reconnection_;  // polls for a new bus
};

}  // namespace sordin
