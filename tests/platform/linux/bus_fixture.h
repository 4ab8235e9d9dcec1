// SPDX-License-Identifier: MIT
#pragma once

#include "rig/private_bus.h"
#include "rig/wait_until.h"

#include <gmock/gmock.h>

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusVariant>

namespace sordin {

/// Sends messages on a bus and processes incoming ones while it waits.
class BusTalk {
protected:
    template <class Condition>
    static bool comes(Condition condition, std::chrono::milliseconds within = std::chrono::seconds(30)) {
        return waitUntil(
            [&] {
                QCoreApplication::processEvents();
                return condition();
            },
            within);
    }
    [[nodiscard]] static QDBusMessage question(const QString& whom, const QString& path,
                                               const QString& interface, const QString& method,
                                               const QVariantList& arguments) {
        auto message = QDBusMessage::createMethodCall(whom, path, interface, method);
        message.setArguments(arguments);
        return message;
    }
    [[nodiscard]] static QDBusMessage answer(const QDBusConnection& asker, const QDBusMessage& what) {
        const auto call = asker.asyncCall(what);
        comes([&] { return call.isFinished(); });
        return call.reply();
    }
};

/// A private bus with two connections: the program, and the desktop that calls it.
class BusParties : protected BusTalk {
protected:
    BusParties()
        : program(QDBusConnection::connectToBus(QString::fromStdString(bus.address()), "program")),
          desktop(QDBusConnection::connectToBus(QString::fromStdString(bus.address()), "desktop")) {}
    ~BusParties() {
        QDBusConnection::disconnectFromBus("program");
        QDBusConnection::disconnectFromBus("desktop");
    }

    /// The answer to a call from the desktop.
    [[nodiscard]] QDBusMessage ask(const QString& path, const QString& interface, const QString& method,
                                   const QVariantList& arguments = {}) const {
        return answer(desktop, question(program.baseService(), path, interface, method, arguments));
    }
    [[nodiscard]] QVariant property(const char* path, const char* interface, const char* name) const {
        const auto answer = ask(path, "org.freedesktop.DBus.Properties", "Get", {interface, name});
        return answer.arguments().value(0).value<QDBusVariant>().variant();
    }

    const PrivateBus bus;
    QDBusConnection program;
    QDBusConnection desktop;

public:
    BusParties(const BusParties&) = delete;
    BusParties& operator=(const BusParties&) = delete;
};

class BusTest : public testing::Test, protected BusParties {};

}  // namespace sordin
