// SPDX-License-Identifier: MIT
#include "platform/linux/session/running_program.h"

#include "platform/linux/session/control_interface.h"

#include <QDBusArgument>

namespace sordin {

namespace {

constexpr int patience = 10'000;  // milliseconds; a program that is starting takes a while

/// Returns the reply or an error message.
std::variant<QDBusMessage, QString> answerTo(const QDBusMessage& call, const QDBusConnection& bus) {
    if (!bus.isConnected()) {
        return QStringLiteral("is not reachable: there is no session bus");
    }
    const QDBusMessage answer = bus.call(call, QDBus::Block, patience);
    if (answer.type() == QDBusMessage::ReplyMessage) {
        return answer;
    }
    const QString error = answer.errorName();
    return error == QLatin1String("org.freedesktop.DBus.Error.NameHasNoOwner") ||
                   error == QLatin1String("org.freedesktop.DBus.Error.ServiceUnknown")
               ? QStringLiteral("is not running")
               : QStringLiteral("does not respond: %1").arg(answer.errorMessage());
}

QDBusMessage question(const char* interface, const QString& method) {
    auto call = QDBusMessage::createMethodCall(QLatin1String(ApplicationService::id),
                                               QLatin1String(ApplicationService::path),
                                               QLatin1String(interface), method);
    call.setAutoStartService(false);
    return call;
}

}  // namespace

std::optional<QString> callRunningProgram(const QDBusConnection& bus, const QString& method) {
    const auto answer = answerTo(question(ControlInterface::name, method), bus);
    const auto* problem = std::get_if<QString>(&answer);
    return problem != nullptr ? std::optional(*problem) : std::nullopt;
}

std::variant<QVariantMap, QString> propertiesOfRunningProgram(const QDBusConnection& bus) {
    const auto answer = answerTo(statusQuestion(), bus);
    if (const auto* problem = std::get_if<QString>(&answer)) {
        return *problem;
    }
    return qdbus_cast<QVariantMap>(std::get<QDBusMessage>(answer).arguments().value(0));
}

QDBusMessage statusQuestion() {
    auto call = question("org.freedesktop.DBus.Properties", QStringLiteral("GetAll"));
    call << QLatin1String(ControlInterface::name);
    return call;
}

}  // namespace sordin
