// SPDX-License-Identifier: MIT
#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QStringList>
#include <QVariantMap>
#include <vector>

namespace sordin {

/// Records the property change signals of an object.
class PropertyEar : public QObject {
    Q_OBJECT

public:
    PropertyEar(QDBusConnection bus, const QString& service, const QString& path) {
        bus.connect(service, path, "org.freedesktop.DBus.Properties", "PropertiesChanged", this,
                    SLOT(note(QString, QVariantMap, QStringList)));
    }

    /// The changed properties of each signal.
    std::vector<QVariantMap> changes;

public Q_SLOTS:
    void note(const QString& /*interface*/, const QVariantMap& changed, const QStringList& /*invalid*/) {
        changes.push_back(changed);
    }
};

}  // namespace sordin
