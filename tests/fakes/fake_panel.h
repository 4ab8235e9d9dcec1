// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/session/dbus_structs.h"

#include <QDBusConnection>
#include <QDBusContext>
#include <QObject>
#include <utility>
#include <vector>

namespace sordin {

/// A desktop panel that shows icons, with the watcher at which icons register.
class FakePanel : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    Q_PROPERTY(bool IsStatusNotifierHostRegistered READ shows)
    Q_PROPERTY(QStringList RegisteredStatusNotifierItems READ registered)
    Q_PROPERTY(int ProtocolVersion READ version)

public:
    static constexpr auto service = "org.kde.StatusNotifierWatcher";
    static constexpr auto path = "/StatusNotifierWatcher";

    explicit FakePanel(QDBusConnection bus) : bus_(std::move(bus)) {
        bus_.registerObject(path, this,
                            QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals |
                                QDBusConnection::ExportAllProperties);
        bus_.registerService(service);
        const char* item = "org.kde.StatusNotifierItem";
        bus_.connect({}, "/StatusNotifierItem", item, "NewIcon", this, SLOT(noteIcon()));
        bus_.connect({}, "/StatusNotifierItem", item, "NewToolTip", this, SLOT(noteTip()));
        bus_.connect({}, "/StatusNotifierItem", "org.freedesktop.DBus.Properties", "PropertiesChanged", this,
                     SLOT(noteProperties(QString, QVariantMap, QStringList)));
    }
    ~FakePanel() override { leave(); }
    Q_DISABLE_COPY_MOVE(FakePanel)

    void leave() {
        bus_.unregisterService(service);
        bus_.unregisterObject(path);
    }
    /// Sets whether a panel is connected to the watcher.
    void setShows(bool shows) {
        shows_ = shows;
        if (shows) {
            Q_EMIT StatusNotifierHostRegistered();
        } else {
            Q_EMIT StatusNotifierHostUnregistered();
        }
    }

    /// The registered items, by bus name.
    [[nodiscard]] const std::vector<QString>& items() const { return items_; }
    [[nodiscard]] int iconChanges() const { return iconChanges_; }
    [[nodiscard]] int tipChanges() const { return tipChanges_; }
    /// The icon's last announced description for screen readers.
    [[nodiscard]] const QString& description() const { return description_; }

    [[nodiscard]] bool shows() const { return shows_; }
    [[nodiscard]] QStringList registered() const { return {items_.begin(), items_.end()}; }
    [[nodiscard]] int version() const { return 0; }

public Q_SLOTS:
    void RegisterStatusNotifierItem(const QString& item) { items_.push_back(item); }
    void RegisterStatusNotifierHost(const QString& /*service*/) {}
    void noteIcon() { ++iconChanges_; }
    void noteTip() { ++tipChanges_; }
    void noteProperties(const QString& /*interface*/, const QVariantMap& changed,
                        const QStringList& /*unknown*/) {
        description_ = changed.value("IconAccessibleDesc").toString();
    }

Q_SIGNALS:
    void StatusNotifierItemRegistered(const QString& item);
    void StatusNotifierItemUnregistered(const QString& item);
    void StatusNotifierHostRegistered();
    void StatusNotifierHostUnregistered();

private:
    QDBusConnection bus_;
    bool shows_ = true;
    std::vector<QString> items_;
    int iconChanges_ = 0;
    int tipChanges_ = 0;
    QString description_;
};

/// Records the change signals of a menu.
class MenuEar : public QObject {
    Q_OBJECT

public:
    MenuEar(QDBusConnection bus, const QString& service) {
        const char* interface = "com.canonical.dbusmenu";
        bus.connect(service, "/MenuBar", interface, "LayoutUpdated", this, SLOT(noteLayout(uint, int)));
        bus.connect(service, "/MenuBar", interface, "ItemsPropertiesUpdated", this,
                    SLOT(noteUpdate(QList<sordin::MenuProperties>, QList<sordin::MenuDefaults>)));
    }

    std::vector<unsigned> revisions;
    /// For each signal: entry ids with their toggle states.
    std::vector<std::vector<std::pair<int, int>>> updates;

public Q_SLOTS:
    void noteLayout(uint revision, int /*parent*/) { revisions.push_back(revision); }
    void noteUpdate(const QList<sordin::MenuProperties>& updated,
                    const QList<sordin::MenuDefaults>& /*removed*/) {
        updates.emplace_back();
        for (const MenuProperties& each : updated) {
            updates.back().emplace_back(each.id, each.properties.value("toggle-state").toInt());
        }
    }
};

}  // namespace sordin
