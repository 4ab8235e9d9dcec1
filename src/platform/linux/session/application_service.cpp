// SPDX-License-Identifier: MIT
#include "platform/linux/session/application_service.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QVariantMap>
#include <chrono>

namespace sordin {

namespace {

const QString serviceName = QLatin1String(ApplicationService::id);
const QString busName = QStringLiteral("org.freedesktop.DBus");
const QString interfaceName = QStringLiteral("org.freedesktop.Application");

const QString applicationDescription = QStringLiteral(R"(  <interface name="org.freedesktop.Application">
    <method name="Activate">
      <arg name="platform_data" type="a{sv}" direction="in"/>
    </method>
    <method name="Open">
      <arg name="uris" type="as" direction="in"/>
      <arg name="platform_data" type="a{sv}" direction="in"/>
    </method>
    <method name="ActivateAction">
      <arg name="action_name" type="s" direction="in"/>
      <arg name="parameter" type="av" direction="in"/>
      <arg name="platform_data" type="a{sv}" direction="in"/>
    </method>
  </interface>)");

}  // namespace

ApplicationService::ApplicationService(QDBusConnection bus,
                                       std::function<void(const QString& token)> activated, bool startedByBus)
    : bus_(std::move(bus)),
      object_(bus_, QLatin1String(path)),
      activated_(std::move(activated)),
      startedByBus_(startedByBus) {
    if (!bus_.isConnected()) {
        return;
    }
    // Register the interface before the name, because clients may call as soon as the name exists.
    object_.add(interfaceName, interface());
    takeName();
    // Qt reports a lost connection only on some threads and does not reconnect.
    constexpr std::chrono::seconds interval{5};
    reconnection_.setTimerType(Qt::VeryCoarseTimer);
    QObject::connect(&reconnection_, &QTimer::timeout, &reconnection_, [this] { reconnect(); });
    reconnection_.start(interval);
}

void ApplicationService::reconnect() {
    if (bus_.isConnected()) {
        return;
    }
    const QString connection = QStringLiteral("sordin-%1").arg(connections_++);
    const auto bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, connection);
    if (!bus.isConnected()) {
        QDBusConnection::disconnectFromBus(connection);
        return;
    }
    bus_ = bus;
    object_.moveTo(bus_);
    takeName();
}

void ApplicationService::takeName() {
    const auto reply =
        bus_.interface()->registerService(serviceName, QDBusConnectionInterface::DontQueueService,
                                          QDBusConnectionInterface::DontAllowReplacement);
    if (reply.isValid()) {
        name_ = reply.value() == QDBusConnectionInterface::ServiceRegistered ? Name::ours : Name::taken;
    }
}

ApplicationService::~ApplicationService() {
    if (name_ == Name::ours) {
        // Sent without waiting for a reply, because the bus may hang.
        bus_.send(QDBusMessage::createMethodCall(busName, QStringLiteral("/org/freedesktop/DBus"), busName,
                                                 QStringLiteral("ReleaseName"))
                  << serviceName);
    }
}

bool ApplicationService::activateOther() {
    constexpr int patience = 10'000;  // milliseconds; a program that is starting takes a while
    QVariantMap platformData;
    for (const auto& [key, variable] : {std::pair("activation-token", "XDG_ACTIVATION_TOKEN"),
                                        std::pair("desktop-startup-id", "DESKTOP_STARTUP_ID")}) {
        if (const QString token = qEnvironmentVariable(variable); !token.isEmpty()) {
            platformData.insert(QLatin1String(key), token);
        }
    }
    auto call = QDBusMessage::createMethodCall(serviceName, QLatin1String(path), interfaceName,
                                               QStringLiteral("Activate"));
    call << platformData;
    return bus_.call(call, QDBus::Block, patience).type() == QDBusMessage::ReplyMessage;
}

bool ApplicationService::otherAnswers() const {
    constexpr int patience = 10'000;  // milliseconds; a program that is starting takes a while
    const auto call = QDBusMessage::createMethodCall(serviceName, QLatin1String(path), interfaceName,
                                                     QStringLiteral("ActivateAction"))
                      << QString() << QVariantList() << QVariantMap();
    // The empty action does not exist. InvalidArgs proves that the owner implements the actions.
    return bus_.call(call, QDBus::Block, patience).errorName() ==
           QDBusError::errorString(QDBusError::InvalidArgs);
}

DbusObject::Interface ApplicationService::interface() {
    // Open does the same as Activate, because there are no files to open.
    const auto activate = [this](const QDBusMessage& call) {
        const auto platformData = qdbus_cast<QVariantMap>(call.arguments().constLast());
        // Launchers built with GLib before 2.76 pass the token only under its older name.
        const QVariant token = platformData.value(QStringLiteral("activation-token"),
                                                  platformData.value(QStringLiteral("desktop-startup-id")));
        activated_(token.toString());
        return call.createReply();
    };
    return {
        applicationDescription,
        {{QStringLiteral("Activate"), {QStringLiteral("a{sv}"), activate}},
         {QStringLiteral("Open"), {QStringLiteral("asa{sv}"), activate}},
         {QStringLiteral("ActivateAction"),
          {QStringLiteral("sava{sv}"), [this](const QDBusMessage& call) { return activateAction(call); }}}},
        {},
        {}};
}

QDBusMessage ApplicationService::activateAction(const QDBusMessage& call) {
    const auto found = actions_.find(call.arguments().at(0).toString());
    if (found == actions_.end() || !qdbus_cast<QVariantList>(call.arguments().at(1)).isEmpty()) {
        return call.createErrorReply(QDBusError::InvalidArgs,
                                     QStringLiteral("No action has this name and this parameter"));
    }
    // The activation token is ignored, because no action shows a window.
    found->second(startedByBus_ && object_.calls() == 1);
    return call.createReply();
}

}  // namespace sordin
