// SPDX-License-Identifier: MIT
#include "platform/linux/session/dbus_menu.h"

#include <algorithm>
#include <utility>

namespace sordin {

namespace {

constexpr int root = 0;

QVariantMap only(const QVariantMap& properties, const QStringList& names) {
    if (names.isEmpty()) {
        return properties;
    }
    QVariantMap wanted;
    for (auto each = properties.begin(); each != properties.end(); ++each) {
        if (names.contains(each.key())) {
            wanted.insert(each.key(), each.value());
        }
    }
    return wanted;
}

/// Contains all properties, so that sending them again covers every change.
QVariantMap propertiesOf(const StatusMenuEntry& entry) {
    using Kind = StatusMenuEntry::Kind;
    if (entry.kind == Kind::separator) {
        return {{QStringLiteral("type"), QStringLiteral("separator")}};
    }
    QString label = entry.text;
    label.replace(QLatin1Char('_'), QStringLiteral("__"));  // a single underscore marks the access key
    QVariantMap properties{{QStringLiteral("label"), label}, {QStringLiteral("enabled"), entry.enabled}};
    if (entry.kind == Kind::toggle) {
        properties.insert(QStringLiteral("toggle-type"), QStringLiteral("checkmark"));
        properties.insert(QStringLiteral("toggle-state"), entry.checked ? 1 : 0);
    }
    return properties;
}

const QVariantMap& rootProperties() {
    static const QVariantMap properties{{QStringLiteral("children-display"), QStringLiteral("submenu")}};
    return properties;
}

}  // namespace

DbusMenu::DbusMenu(QDBusConnection bus, std::function<QString()> takeToken)
    : bus_(std::move(bus)), takeToken_(std::move(takeToken)) {
    registerDbusStructs();
    bus_.registerObject(QLatin1String(path), this,
                        QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals |
                            QDBusConnection::ExportAllProperties);
}

DbusMenu::~DbusMenu() {
    bus_.unregisterObject(QLatin1String(path));
}

void DbusMenu::setEntries(std::vector<StatusMenuEntry> entries) {
    const auto before = std::exchange(entries_, std::move(entries));
    const auto sameKind = [](const auto& a, const auto& b) { return a.kind == b.kind; };
    if (!std::equal(before.begin(), before.end(), entries_.begin(), entries_.end(), sameKind)) {
        Q_EMIT LayoutUpdated(++revision_, root);
        return;
    }
    QList<MenuProperties> updated;
    for (std::size_t i = 0; i < entries_.size(); ++i) {
        if (!(entries_[i] == before[i])) {
            updated.append({static_cast<int>(i) + 1, propertiesOf(entries_[i])});
        }
    }
    if (!updated.isEmpty()) {
        Q_EMIT ItemsPropertiesUpdated(updated, {});
    }
}

const StatusMenuEntry* DbusMenu::entry(int id) const {
    const auto index = static_cast<std::size_t>(id) - 1;  // ids of 0 and below wrap to huge indices
    return id > root && index < entries_.size() ? &entries_[index] : nullptr;
}

MenuLayout DbusMenu::layoutOf(int id, const QStringList& names) const {
    const StatusMenuEntry* const found = entry(id);
    return {id, found != nullptr ? only(propertiesOf(*found), names) : QVariantMap(), {}};
}

unsigned DbusMenu::GetLayout(int parentId, int recursionDepth, const QStringList& propertyNames,
                             MenuLayout& layout) {
    if (parentId != root) {
        layout = layoutOf(parentId, propertyNames);
        return revision_;
    }
    layout = {root, only(rootProperties(), propertyNames), {}};
    for (int id = 1; recursionDepth != 0 && id <= static_cast<int>(entries_.size()); ++id) {
        layout.children.append(QVariant::fromValue(layoutOf(id, propertyNames)));
    }
    return revision_;
}

QList<MenuProperties> DbusMenu::GetGroupProperties(const QList<int>& ids, const QStringList& propertyNames) {
    QList<MenuProperties> group;
    for (int id = 1; id <= static_cast<int>(entries_.size()); ++id) {
        if (ids.isEmpty() || ids.contains(id)) {
            group.append({id, layoutOf(id, propertyNames).properties});
        }
    }
    return group;
}

QDBusVariant DbusMenu::GetProperty(int id, const QString& name) {
    const QVariantMap properties = id == root ? rootProperties() : layoutOf(id, {}).properties;
    return QDBusVariant(properties.value(name, QString()));  // D-Bus cannot carry an empty variant
}

void DbusMenu::Event(int id, const QString& type, const QDBusVariant& /*data*/, unsigned /*timestamp*/) {
    const StatusMenuEntry* const found = entry(id);
    if (type == QLatin1String("clicked") && found != nullptr && found->enabled && found->triggered) {
        const auto triggered = found->triggered;  // a copy, because the call may replace the entries
        triggered(takeToken_());
    }
}

QList<int> DbusMenu::EventGroup(const QList<MenuEvent>& events) {
    QList<int> unknown;
    for (const MenuEvent& each : events) {
        if (each.id != root && entry(each.id) == nullptr) {
            unknown.append(each.id);
        } else {
            Event(each.id, each.type, each.data, each.timestamp);
        }
    }
    return unknown;
}

bool DbusMenu::AboutToShow(int /*id*/) {
    return false;  // the menu is always up to date
}

QList<int> DbusMenu::AboutToShowGroup(const QList<int>& ids, QList<int>& unknownIds) {
    std::copy_if(ids.begin(), ids.end(), std::back_inserter(unknownIds),
                 [this](int id) { return id != root && entry(id) == nullptr; });
    return {};
}

}  // namespace sordin
