// SPDX-License-Identifier: MIT
#include "platform/linux/session/running_program.h"

#include "platform/linux/session/control_interface.h"

#include <QDBusMessage>

namespace sordin {

std::optional<QString> callRunningProgram(const QDBusConnection& bus, const QString& method) {
    if (!bus.isConnected()) {
        return QStringLiteral("cannot be reached: there is no session bus");
    }
    constexpr int patience = 10'000;  // milliseconds; it may be just starting
    auto call = QDBusMessage::createMethodCall(QLatin1String(ApplicationService::id),
                                               QLatin1String(ApplicationService::path),
                                               QLatin1String(ControlInterface::name), method);
    call.setAutoStartService(false);
    const QDBusMessage answer = bus.call(call, QDBus::Block, patience);
    if (answer.type() == QDBusMessage::ReplyMessage) {
        return std::nullopt;
    }
    const QString error = answer.errorName();
    return error == QLatin1String("org.freedesktop.DBus.Error.NameHasNoOwner") ||
                   error == QLatin1String("org.freedesktop.DBus.Error.ServiceUnknown")
               ? QStringLiteral("is not running")
               : QStringLiteral("does not answer: %1").arg(answer.errorMessage());
}

}  // namespace sordin
