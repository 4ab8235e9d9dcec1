// SPDX-License-Identifier: MIT
#include "platform/linux/session/dbus_structs.h"

#include <QDBusMetaType>

namespace sordin {

namespace {

template <class... Fields>
QDBusArgument& write(QDBusArgument& argument, const Fields&... fields) {
    argument.beginStructure();
    (argument << ... << fields);
    argument.endStructure();
    return argument;
}

template <class... Fields>
const QDBusArgument& read(const QDBusArgument& argument, Fields&... fields) {
    argument.beginStructure();
    (argument >> ... >> fields);
    argument.endStructure();
    return argument;
}

template <class Struct>
void registerStruct() {
    qDBusRegisterMetaType<Struct>();
    qDBusRegisterMetaType<QList<Struct>>();
}

}  // namespace

QDBusArgument& operator<<(QDBusArgument& argument, const StatusPixmap& value) {
    return write(argument, value.width, value.height, value.argb);
}
const QDBusArgument& operator>>(const QDBusArgument& argument, StatusPixmap& value) {
    return read(argument, value.width, value.height, value.argb);
}

QDBusArgument& operator<<(QDBusArgument& argument, const StatusToolTip& value) {
    return write(argument, value.icon, value.pixmaps, value.title, value.text);
}
const QDBusArgument& operator>>(const QDBusArgument& argument, StatusToolTip& value) {
    return read(argument, value.icon, value.pixmaps, value.title, value.text);
}

QDBusArgument& operator<<(QDBusArgument& argument, const MenuLayout& value) {
    return write(argument, value.id, value.properties, value.children);
}
const QDBusArgument& operator>>(const QDBusArgument& argument, MenuLayout& value) {
    return read(argument, value.id, value.properties, value.children);
}

QDBusArgument& operator<<(QDBusArgument& argument, const MenuProperties& value) {
    return write(argument, value.id, value.properties);
}
const QDBusArgument& operator>>(const QDBusArgument& argument, MenuProperties& value) {
    return read(argument, value.id, value.properties);
}

QDBusArgument& operator<<(QDBusArgument& argument, const MenuDefaults& value) {
    return write(argument, value.id, value.names);
}
const QDBusArgument& operator>>(const QDBusArgument& argument, MenuDefaults& value) {
    return read(argument, value.id, value.names);
}

QDBusArgument& operator<<(QDBusArgument& argument, const MenuEvent& value) {
    return write(argument, value.id, value.type, value.data, value.timestamp);
}
const QDBusArgument& operator>>(const QDBusArgument& argument, MenuEvent& value) {
    return read(argument, value.id, value.type, value.data, value.timestamp);
}

QDBusArgument& operator<<(QDBusArgument& argument, const SettingsPanel& value) {
    return write(argument, value.name, value.arguments);
}
const QDBusArgument& operator>>(const QDBusArgument& argument, SettingsPanel& value) {
    return read(argument, value.name, value.arguments);
}

void registerDbusStructs() {
    registerStruct<StatusPixmap>();
    registerStruct<StatusToolTip>();
    registerStruct<MenuLayout>();
    registerStruct<MenuProperties>();
    registerStruct<MenuDefaults>();
    registerStruct<MenuEvent>();
    registerStruct<SettingsPanel>();
}

}  // namespace sordin
