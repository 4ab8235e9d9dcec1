// SPDX-License-Identifier: MIT
#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QString>
#include <QTimer>
#include <QVariantMap>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <vector>

namespace sordin {

/// A D-Bus object composed of interfaces. Unlike Qt's own export, it accepts only arguments and values of the
/// declared types instead of converting others, and it emits PropertiesChanged. Everything runs on the
/// object's thread.
class DbusObject final : public QDBusVirtualObject {
public:
    struct Method {
        QString arguments;  ///< the signature of the arguments; calls with another one are refused
        /// Returns the reply or an error.
        std::function<QDBusMessage(const QDBusMessage& call)> answer;
    };
    struct Interface {
        QString description;  ///< its XML element for introspection
        std::map<QString, Method> methods;
        /// Returns the current values of all properties, always with the same types. Empty if there are no
        /// properties.
        std::function<QVariantMap()> properties;
        /// Setters of the writable properties; the value has the property's type.
        std::map<QString, std::function<void(const QVariant& value)>> writers;
    };

    /// Registers the object until it is destroyed.
    DbusObject(QDBusConnection bus, QString path);
    ~DbusObject() override;
    Q_DISABLE_COPY_MOVE(DbusObject)

    /// Moves the object from its current bus to another one.
    void moveTo(QDBusConnection bus);

    /// Calls of interfaces that are not added are refused.
    void add(const QString& name, Interface interface) { interfaces_[name] = std::move(interface); }
    void remove(const QString& name) { interfaces_.erase(name); }

    /// Emits PropertiesChanged with these values.
    void tellChanged(const QString& interface, const QVariantMap& properties);

    /// The number of calls so far, including the one in progress.
    [[nodiscard]] std::uint64_t calls() const { return calls_; }

    [[nodiscard]] QString introspect(const QString& path) const override;
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

private:
    /// Returns none if Qt is to handle the call: introspection and all remaining errors.
    [[nodiscard]] std::optional<QDBusMessage> answer(const QDBusMessage& call) const;
    [[nodiscard]] QDBusMessage answerOfProperties(const QDBusMessage& call) const;
    [[nodiscard]] QDBusMessage get(const QDBusMessage& call) const;
    [[nodiscard]] QDBusMessage getAll(const QDBusMessage& call) const;
    [[nodiscard]] QDBusMessage set(const QDBusMessage& call) const;
    /// Returns the interfaces that a call addresses; an empty name addresses all.
    [[nodiscard]] std::vector<const Interface*> named(const QString& name) const;

    /// Counts a call. After a burst, memory is returned to the system as soon as the calls pause.
    void asked();

    QDBusConnection bus_;
    const QString path_;
    std::map<QString, Interface> interfaces_;
    std::uint64_t calls_ = 0;
    int burst_ = 0;  // calls since the last pause
    QTimer rest_;
};

}  // namespace sordin
