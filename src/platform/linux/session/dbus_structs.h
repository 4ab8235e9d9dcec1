// SPDX-License-Identifier: MIT
// D-Bus structures: of the icon, of its menu, and of GNOME's settings.
#pragma once

#include <QByteArray>
#include <QDBusArgument>
#include <QDBusVariant>
#include <QList>
#include <QMetaType>
#include <QString>
#include <QStringList>
#include <QVariantMap>

namespace sordin {

/// (iiay): an image with 32 bits per pixel, ARGB in network byte order.
struct StatusPixmap {
    int width = 0;
    int height = 0;
    QByteArray argb;
};

/// (sa(iiay)ss)
struct StatusToolTip {
    QString icon;
    QList<StatusPixmap> pixmaps;
    QString title;
    QString text;
};

/// (ia{sv}av): a menu entry and its children, each a MenuLayout in a variant.
struct MenuLayout {
    int id = 0;
    QVariantMap properties;
    QVariantList children;
};

/// (ia{sv})
struct MenuProperties {
    int id = 0;
    QVariantMap properties;
};

/// (ias): properties that are reset to their defaults.
struct MenuDefaults {
    int id = 0;
    QStringList names;
};

/// (isvu)
struct MenuEvent {
    int id = 0;
    QString type;
    QDBusVariant data;
    unsigned timestamp = 0;
};

/// (sav): a page of GNOME's settings and its arguments.
struct SettingsPanel {
    QString name;
    QVariantList arguments;
};

QDBusArgument& operator<<(QDBusArgument& argument, const StatusPixmap& value);
const QDBusArgument& operator>>(const QDBusArgument& argument, StatusPixmap& value);
QDBusArgument& operator<<(QDBusArgument& argument, const StatusToolTip& value);
const QDBusArgument& operator>>(const QDBusArgument& argument, StatusToolTip& value);
QDBusArgument& operator<<(QDBusArgument& argument, const MenuLayout& value);
const QDBusArgument& operator>>(const QDBusArgument& argument, MenuLayout& value);
QDBusArgument& operator<<(QDBusArgument& argument, const MenuProperties& value);
const QDBusArgument& operator>>(const QDBusArgument& argument, MenuProperties& value);
QDBusArgument& operator<<(QDBusArgument& argument, const MenuDefaults& value);
const QDBusArgument& operator>>(const QDBusArgument& argument, MenuDefaults& value);
QDBusArgument& operator<<(QDBusArgument& argument, const MenuEvent& value);
const QDBusArgument& operator>>(const QDBusArgument& argument, MenuEvent& value);
QDBusArgument& operator<<(QDBusArgument& argument, const SettingsPanel& value);
const QDBusArgument& operator>>(const QDBusArgument& argument, SettingsPanel& value);

/// Registers the types with QtDBus. May be called more than once.
void registerDbusStructs();

}  // namespace sordin

Q_DECLARE_METATYPE(sordin::StatusPixmap)
Q_DECLARE_METATYPE(sordin::StatusToolTip)
Q_DECLARE_METATYPE(sordin::MenuLayout)
Q_DECLARE_METATYPE(sordin::MenuProperties)
Q_DECLARE_METATYPE(sordin::MenuDefaults)
Q_DECLARE_METATYPE(sordin::MenuEvent)
Q_DECLARE_METATYPE(sordin::SettingsPanel)
