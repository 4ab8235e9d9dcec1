// SPDX-License-Identifier: MIT
#include "ui/style/appearance.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QEvent>
#include <QGuiApplication>
#include <QLoggingCategory>
#include <QMetaType>
#include <QPalette>
#include <QRegularExpression>
#include <array>
#include <utility>

namespace sordin {

namespace {

Q_LOGGING_CATEGORY(appearanceLog, "sordin.appearance", QtWarningMsg)

const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
const QString interface = QStringLiteral("org.freedesktop.portal.Settings");
const QString appearanceGroup = QStringLiteral("org.freedesktop.appearance");
const QString gnomeGroup = QStringLiteral("org.gnome.desktop.interface");
const QString colourSchemeKey = QStringLiteral("color-scheme");
const QString accentKey = QStringLiteral("accent-color");
const QString animationsKey = QStringLiteral("enable-animations");

// XFCE's portal does not report dark themes; its settings service does (xfconf-query(1)).
const QString xfceService = QStringLiteral("org.xfce.Xfconf");
const QString xfcePath = QStringLiteral("/org/xfce/Xfconf");
const QString xfceGroup = QStringLiteral("xsettings");
const QString xfceThemeKey = QStringLiteral("/Net/ThemeName");

constexpr int patience = 2000;  // milliseconds; later replies are handled as changes

/// Returns the portal's color, three components from 0 to 1; an invalid color for any other value.
QColor colourIn(const QVariant& value) {
    if (!value.canConvert<QDBusArgument>()) {
        return {};
    }
    const auto argument = value.value<QDBusArgument>();
    if (argument.currentSignature() != QLatin1String("(ddd)")) {
        return {};
    }
    std::array<double, 3> shares{};
    argument.beginStructure();
    argument >> shares[0] >> shares[1] >> shares[2];
    argument.endStructure();
    for (const double share : shares) {
        if (!(share >= 0 && share <= 1)) {
            return {};
        }
    }
    return QColor::fromRgbF(static_cast<float>(shares[0]), static_cast<float>(shares[1]),
                            static_cast<float>(shares[2]));
}

/// By the naming of GTK's themes, such as "Adwaita-dark" and "Mint-Y-Dark-Aqua". "Arc-Darker" is light.
bool isDarkTheme(const QString& name) {
    static const QRegularExpression dark(QStringLiteral("[-_]dark([-_]|$)"),
                                         QRegularExpression::CaseInsensitiveOption);
    return name.contains(dark);
}

bool isXfce() {
    const QString desktops = qEnvironmentVariable("XDG_CURRENT_DESKTOP");
    return desktops.split(QLatin1Char(':')).contains(QLatin1String("XFCE"), Qt::CaseInsensitive);
}

}  // namespace

Appearance::Appearance(QObject* parent, QDBusConnection bus) : QObject(parent), bus_(std::move(bus)) {
    qApp->installEventFilter(this);
    // Qt looks up slot argument types by name, and this one is not registered yet.
    qRegisterMetaType<QDBusVariant>("QDBusVariant");
    follow(service, path, interface, "SettingChanged");
    ask(appearanceGroup, colourSchemeKey);
    ask(appearanceGroup, accentKey);
    ask(gnomeGroup, animationsKey);
    if (isXfce()) {
        follow(xfceService, xfcePath, xfceService, "PropertyChanged");
        auto question =
            QDBusMessage::createMethodCall(xfceService, xfcePath, xfceService, QStringLiteral("GetProperty"));
        question.setAutoStartService(false);
        send(question << xfceGroup << xfceThemeKey, xfceGroup, xfceThemeKey);
    }
}

Appearance*& Appearance::used() {
    static Appearance* used = nullptr;
    return used;
}

Appearance* Appearance::create(QQmlEngine* /*qml*/, QJSEngine* /*engine*/) {
    if (used() != nullptr) {
        QJSEngine::setObjectOwnership(used(), QJSEngine::CppOwnership);
    }
    return used();
}

void Appearance::follow(const QString& whom, const QString& object, const QString& what, const char* signal) {
    if (bus_.isConnected() && !bus_.connect(whom, object, what, QLatin1String(signal), this,
                                            SLOT(settingChanged(QString, QString, QDBusVariant)))) {
        qCWarning(appearanceLog, "cannot subscribe to changes of the desktop's appearance: %s",
                  qPrintable(bus_.lastError().message()));
    }
}

void Appearance::ask(const QString& group, const QString& key) {
    auto question = QDBusMessage::createMethodCall(service, path, interface, QStringLiteral("Read"));
    send(question << group << key, group, key);
}

void Appearance::send(const QDBusMessage& question, const QString& group, const QString& key) {
    // NOLINTNEXTLINE(cppcoreguidelines-owning-memory): this owns it until it is done
    auto* call = new QDBusPendingCallWatcher(bus_.asyncCall(question, patience), this);
    connect(call, &QDBusPendingCallWatcher::finished, this, [this, call, group, key] {
        call->deleteLater();
        const QDBusPendingReply<QDBusVariant> reply = *call;
        if (reply.isValid()) {
            settingChanged(group, key, reply.value());
        }
    });
}

void Appearance::settingChanged(const QString& group, const QString& key, const QDBusVariant& value) {
    QVariant content = value.variant();
    if (content.canConvert<QDBusVariant>()) {  // older portals wrap the value twice
        content = content.value<QDBusVariant>().variant();
    }
    if (group == appearanceGroup && key == colourSchemeKey) {
        colourScheme_ = content.toUInt();
        Q_EMIT changed();
    } else if (group == appearanceGroup && key == accentKey) {
        portalAccent_ = colourIn(content);
        Q_EMIT changed();
    } else if (group == gnomeGroup && key == animationsKey) {
        reducedMotion_ = content.metaType().id() == QMetaType::Bool && !content.toBool();
        Q_EMIT changed();
    } else if (group == xfceGroup && key == xfceThemeKey) {
        darkTheme_ = isDarkTheme(content.toString());
        Q_EMIT changed();
    }
}

bool Appearance::dark() const {
    if (forced_) {
        return *forced_;
    }
    if (colourScheme_ == 1 || colourScheme_ == 2) {
        return colourScheme_ == 1;
    }
    if (darkTheme_) {
        return *darkTheme_;
    }
    return QGuiApplication::palette().color(QPalette::Window).lightnessF() < 0.5F;
}

QColor Appearance::accent() const {
    return portalAccent_;
}

void Appearance::force(bool dark) {
    forced_ = dark;
    Q_EMIT changed();
}

bool Appearance::eventFilter(QObject* object, QEvent* event) {
    if (object == qApp && event->type() == QEvent::ApplicationPaletteChange) {
        Q_EMIT changed();
    }
    return QObject::eventFilter(object, event);
}

}  // namespace sordin
