// SPDX-License-Identifier: MIT
#include "platform/linux/session/status_notifier_item.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QLoggingCategory>
#include <utility>

namespace sordin {

namespace {

Q_LOGGING_CATEGORY(itemLog, "sordin.icon", QtWarningMsg)

const QString watcherService = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString watcherPath = QStringLiteral("/StatusNotifierWatcher");

/// Returns the name in the icon theme for a symbol.
QString iconFor(const QString& symbol) {
    if (symbol == QLatin1String("speaker.slash.fill")) {
        return QStringLiteral("org.sordin.Sordin-muting-symbolic");
    }
    return symbol == QLatin1String("speaker.zzz") ? QStringLiteral("org.sordin.Sordin-paused-symbolic")
                                                  : QStringLiteral("org.sordin.Sordin-listening-symbolic");
}

/// Calls the watcher. `answered` gets the reply, unless `object` is destroyed first.
template <class Answered>
void ask(const QDBusConnection& bus, const QDBusMessage& question, QObject* object, Answered answered) {
    // NOLINTNEXTLINE(cppcoreguidelines-owning-memory): the object owns it until it is done
    auto* call = new QDBusPendingCallWatcher(bus.asyncCall(question), object);
    QObject::connect(call, &QDBusPendingCallWatcher::finished, object, [call, answered] {
        call->deleteLater();
        answered(call->reply());
    });
}

}  // namespace

StatusNotifierItem::StatusNotifierItem(QDBusConnection bus, QString iconThemePath)
    : bus_(std::move(bus)),
      iconThemePath_(std::move(iconThemePath)),
      menu_(bus_, [this] { return std::exchange(token_, {}); }),
      watcher_(watcherService, bus_, QDBusServiceWatcher::WatchForOwnerChange) {
    registerDbusStructs();
    bus_.registerObject(QLatin1String(path), this,
                        QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals |
                            QDBusConnection::ExportAllProperties);
    connect(&watcher_, &QDBusServiceWatcher::serviceRegistered, this,
            &StatusNotifierItem::registerWithWatcher);
    connect(&watcher_, &QDBusServiceWatcher::serviceUnregistered, this, &StatusNotifierItem::watcherGone);
    for (const char* signal : {"StatusNotifierHostRegistered", "StatusNotifierHostUnregistered"}) {
        listen(watcherService, watcherPath, watcherService, signal, SLOT(askForHost()));
    }
    qRegisterMetaType<QDBusVariant>("QDBusVariant");  // connect() looks up the type by this name
    listen(QStringLiteral("org.freedesktop.portal.Desktop"),
           QStringLiteral("/org/freedesktop/portal/desktop"),
           QStringLiteral("org.freedesktop.portal.Settings"), "SettingChanged",
           SLOT(settingChanged(QString, QString, QDBusVariant)));
    registerWithWatcher();
}

void StatusNotifierItem::listen(const QString& service, const QString& object, const QString& interface,
                                const char* signal, const char* slot) {
    if (bus_.isConnected() && !bus_.connect(service, object, interface, QLatin1String(signal), this, slot)) {
        qCWarning(itemLog, "cannot subscribe to the desktop's signal %s: %s", signal,
                  qPrintable(bus_.lastError().message()));
    }
}

/// Plasma keeps the colors of the scheme in which it first drew the icon.
void StatusNotifierItem::settingChanged(const QString& group, const QString& key,
                                        const QDBusVariant& /*value*/) {
    if (group == QLatin1String("org.freedesktop.appearance") && key == QLatin1String("color-scheme")) {
        Q_EMIT NewIcon();
    }
}

StatusNotifierItem::~StatusNotifierItem() {
    bus_.unregisterObject(QLatin1String(path));
}

void StatusNotifierItem::registerWithWatcher() {
    auto question = QDBusMessage::createMethodCall(watcherService, watcherPath, watcherService,
                                                   QStringLiteral("RegisterStatusNotifierItem"));
    // Registers the connection's unique name, because sandboxes cannot own well-known names of this kind.
    question << bus_.baseService();
    ask(bus_, question, this, [this](const QDBusMessage& answer) {
        registered_ = answer.type() == QDBusMessage::ReplyMessage;
        if (registered_) {
            askForHost();
        }
    });
}

void StatusNotifierItem::askForHost() {
    auto question = QDBusMessage::createMethodCall(watcherService, watcherPath,
                                                   QStringLiteral("org.freedesktop.DBus.Properties"),
                                                   QStringLiteral("Get"));
    question << watcherService << QStringLiteral("IsStatusNotifierHostRegistered");
    ask(bus_, question, this, [this](const QDBusMessage& answer) {
        const QDBusPendingReply<QDBusVariant> reply = answer;
        hostThere_ = reply.isValid() && reply.value().variant().toBool();
    });
}

void StatusNotifierItem::watcherGone() {
    registered_ = false;
    hostThere_ = false;
}

void StatusNotifierItem::setHandlers(Handlers handlers) {
    handlers_ = std::move(handlers);
}

void StatusNotifierItem::setSymbol(const QString& name) {
    if (const QString icon = iconFor(name); icon != icon_) {
        icon_ = icon;
        Q_EMIT NewIcon();
    }
}

void StatusNotifierItem::setText(const QString& text) {
    if (text != text_) {
        text_ = text;
        Q_EMIT NewToolTip();
        // The interface has no signal for IconAccessibleDesc.
        auto changed =
            QDBusMessage::createSignal(QLatin1String(path), QStringLiteral("org.freedesktop.DBus.Properties"),
                                       QStringLiteral("PropertiesChanged"));
        changed << QStringLiteral("org.kde.StatusNotifierItem")
                << QVariantMap{{QStringLiteral("IconAccessibleDesc"), iconDescription()}} << QStringList();
        bus_.send(changed);
    }
}

void StatusNotifierItem::setMenu(std::vector<StatusMenuEntry> entries) {
    menu_.setEntries(std::move(entries));
}

void StatusNotifierItem::Activate(int x, int y) {
    if (handlers_.activated) {
        handlers_.activated({x, y}, std::exchange(token_, {}));
    }
}

void StatusNotifierItem::SecondaryActivate(int /*x*/, int /*y*/) {
    if (handlers_.toggled) {
        handlers_.toggled();
    }
}

void StatusNotifierItem::XAyatanaSecondaryActivate(unsigned /*timestamp*/) {
    SecondaryActivate(0, 0);
}

void StatusNotifierItem::ContextMenu(int x, int y) {
    Activate(x, y);  // for panels that cannot draw a menu
}

void StatusNotifierItem::Scroll(int /*delta*/, const QString& /*orientation*/) {}

void StatusNotifierItem::ProvideXdgActivationToken(const QString& token) {
    token_ = token;
}

}  // namespace sordin
