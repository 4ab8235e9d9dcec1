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

/// The program in the user's session: it has a name on the session's bus, so that there is one at a time, and
/// is asked to the front there (org.freedesktop.Application). Lives on the main thread.
class ApplicationService {
public:
    /// Also that of the desktop entry, the icon and all else that the desktop knows it by.
    static constexpr auto id = "org.sordin.Sordin";
    /// Where the object is on the bus.
    static constexpr auto path = "/org/sordin/Sordin";

    enum class Name {
        ours,
        taken,  ///< the program runs already
        none    ///< there is no bus
    };

    /// Of the desktop entry. `starts` says that the program was started for it.
    using Action = std::function<void(bool starts)>;

    /// Takes the name. `activated` is called on the main thread, with the token (or none) by which the
    /// desktop lets a window of ours come to the front. `startedByBus` if it was the bus that started the
    /// program, for a call that is still to come. Where the bus goes and another begins at its address, the
    /// name and the object are there again some seconds later.
    ApplicationService(QDBusConnection bus, std::function<void(const QString& token)> activated,
                       bool startedByBus = false);
    ~ApplicationService();
    ApplicationService(const ApplicationService&) = delete;
    ApplicationService& operator=(const ApplicationService&) = delete;

    [[nodiscard]] Name name() const { return name_; }

    /// For the interfaces of the program's own.
    [[nodiscard]] DbusObject& object() { return object_; }

    /// Those that the desktop may ask for, by their names in the desktop entry. None may be empty.
    void setActions(std::map<QString, Action> actions) { actions_ = std::move(actions); }

    /// Asks the one that has the name to the front, with the token that this process was started with. False
    /// if it does not answer, for which it has ten seconds.
    [[nodiscard]] bool activateOther();
    /// Whether the one that has the name is this program, in another process; it has ten seconds too.
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
    int connections_ = 0;  // after the first
    QTimer reconnection_;  // looks whether the bus has been started anew
};

}  // namespace sordin
