// SPDX-License-Identifier: MIT
#include "platform/linux/session/application_service.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <utility>

namespace sordin {

namespace {

const QString service = QLatin1String(ApplicationService::id);
const QString path = QStringLiteral("/org/sordin/Sordin");
const QString interface = QStringLiteral("org.freedesktop.Application");

}  // namespace

ApplicationService::ApplicationService(QDBusConnection bus,
                                       std::function<void(const QString& token)> activated)
    : bus_(std::move(bus)), activated_(std::move(activated)) {
    if (!bus_.isConnected()) {
        return;
    }
    // Before the name, by which others may call it at once.
    bus_.registerObject(path, this, QDBusConnection::ExportAllSlots);
    const auto reply = bus_.interface()->registerService(service, QDBusConnectionInterface::DontQueueService,
                                                         QDBusConnectionInterface::DontAllowReplacement);
    if (reply.isValid()) {
        name_ = reply.value() == QDBusConnectionInterface::ServiceRegistered ? Name::ours : Name::taken;
    }
}

ApplicationService::~ApplicationService() {
    if (name_ == Name::ours) {
        bus_.unregisterService(service);
    }
    bus_.unregisterObject(path);
}

bool ApplicationService::activateOther() {
    constexpr int patience = 10'000;  // milliseconds; it may be just starting
    QVariantMap platformData;
    for (const auto& [key, variable] : {std::pair("activation-token", "XDG_ACTIVATION_TOKEN"),
                                        std::pair("desktop-startup-id", "DESKTOP_STARTUP_ID")}) {
        if (const QString token = qEnvironmentVariable(variable); !token.isEmpty()) {
            platformData.insert(QLatin1String(key), token);
        }
    }
    auto call = QDBusMessage::createMethodCall(service, path, interface, QStringLiteral("Activate"));
    call << platformData;
    return bus_.call(call, QDBus::Block, patience).type() == QDBusMessage::ReplyMessage;
}

void ApplicationService::Activate(const QVariantMap& platformData) {
    activated_(platformData.value(QStringLiteral("activation-token")).toString());
}

void ApplicationService::Open(const QStringList& /*uris*/, const QVariantMap& platformData) {
    Activate(platformData);
}

void ApplicationService::ActivateAction(const QString& /*action*/, const QVariantList& /*parameter*/,
                                        const QVariantMap& platformData) {
    Activate(platformData);
}

}  // namespace sordin
