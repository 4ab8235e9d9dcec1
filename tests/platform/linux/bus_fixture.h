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

/// A bus of the test's own with two on it: the program, and the desktop that asks it.
class BusParties {
protected:
    BusParties()
        : program(QDBusConnection::connectToBus(QString::fromStdString(bus.address()), "program")),
          desktop(QDBusConnection::connectToBus(QString::fromStdString(bus.address()), "desktop")) {}
    ~BusParties() {
        QDBusConnection::disconnectFromBus("program");
        QDBusConnection::disconnectFromBus("desktop");
    }

    /// Whether it comes to hold while messages are handled.
    template <class Condition>
    static bool comes(Condition condition) {
        return waitUntil(
            [&] {
                QCoreApplication::processEvents();
                return condition();
            },
            std::chrono::seconds(10));
    }
    /// What the desktop gets for an answer.
    [[nodiscard]] QDBusMessage ask(const QDBusMessage& question) const {
        const auto call = desktop.asyncCall(question);
        comes([&] { return call.isFinished(); });
        return call.reply();
    }
    [[nodiscard]] QDBusMessage ask(const char* path, const char* interface, const char* method,
                                   const QVariantList& arguments = {}) const {
        auto question = QDBusMessage::createMethodCall(program.baseService(), path, interface, method);
        question.setArguments(arguments);
        return ask(question);
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
