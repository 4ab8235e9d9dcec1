// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/session/dbus_structs.h"
#include "platform/status_item.h"

#include <QDBusConnection>
#include <QObject>
#include <functional>
#include <vector>

namespace sordin {

/// A menu that the desktop draws: com.canonical.dbusmenu, version 3. It has one level; entry `i` has the id i
/// + 1, and id 0 is the menu itself. Unknown ids get an empty reply, as desktops expect.
class DbusMenu : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.canonical.dbusmenu")
    Q_PROPERTY(unsigned Version READ version CONSTANT)
    Q_PROPERTY(QString TextDirection READ textDirection CONSTANT)
    Q_PROPERTY(QString Status READ status CONSTANT)
    Q_PROPERTY(QStringList IconThemePath READ iconThemePath CONSTANT)

public:
    /// The path of the D-Bus object.
    static constexpr auto path = "/MenuBar";

    /// Registers the object until it is destroyed. `takeToken` returns the activation token of the desktop
    /// for the chosen entry; it may be empty.
    DbusMenu(QDBusConnection bus, std::function<QString()> takeToken);
    ~DbusMenu() override;
    Q_DISABLE_COPY_MOVE(DbusMenu)

    void setEntries(std::vector<StatusMenuEntry> entries);

    [[nodiscard]] unsigned version() const { return 3; }
    [[nodiscard]] QString textDirection() const { return QStringLiteral("ltr"); }
    [[nodiscard]] QString status() const { return QStringLiteral("normal"); }
    [[nodiscard]] QStringList iconThemePath() const { return {}; }

    // NOLINTBEGIN(readability-identifier-naming,readability-redundant-access-specifiers): the interface's
    // names
public Q_SLOTS:
    unsigned GetLayout(int parentId, int recursionDepth, const QStringList& propertyNames,
                       sordin::MenuLayout& layout);
    QList<sordin::MenuProperties> GetGroupProperties(const QList<int>& ids, const QStringList& propertyNames);
    QDBusVariant GetProperty(int id, const QString& name);
    void Event(int id, const QString& type, const QDBusVariant& data, unsigned timestamp);
    /// Returns the unknown ids.
    QList<int> EventGroup(const QList<sordin::MenuEvent>& events);
    bool AboutToShow(int id);
    QList<int> AboutToShowGroup(const QList<int>& ids, QList<int>& unknownIds);

Q_SIGNALS:
    void ItemsPropertiesUpdated(const QList<sordin::MenuProperties>& updated,
                                const QList<sordin::MenuDefaults>& removed);
    void LayoutUpdated(unsigned revision, int parent);
    // NOLINTEND(readability-identifier-naming,readability-redundant-access-specifiers)

private:
    /// Returns null if no entry has the id.
    [[nodiscard]] const StatusMenuEntry* entry(int id) const;
    [[nodiscard]] MenuLayout layoutOf(int id, const QStringList& names) const;

    QDBusConnection bus_;
    const std::function<QString()> takeToken_;
    std::vector<StatusMenuEntry> entries_;
    unsigned revision_ = 1;
};

}  // namespace sordin
