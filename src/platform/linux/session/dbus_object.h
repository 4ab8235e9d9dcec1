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

/// An object on the bus, put together from interfaces. Unlike what Qt exports by itself it takes arguments
/// and values of exactly the types that it names, instead of making something of others, and tells of
/// properties that change. Everything is called on its thread.
class DbusObject final : public QDBusVirtualObject {
public:
    struct Method {
        QString arguments;  ///< the signature of what it takes; calls with another are refused
        /// Returns the reply or the error.
        std::function<QDBusMessage(const QDBusMessage& call)> answer;
    };
    struct Interface {
        QString description;  ///< its element in the introspection
        std::map<QString, Method> methods;
        /// All of them, as they are now, always of the same types; empty if it has none.
        std::function<QVariantMap()> properties;
        /// For those that can be written; the value has the type of the property.
        std::map<QString, std::function<void(const QVariant& value)>> writers;
    };

    /// Puts itself on the bus, for its life.
    DbusObject(QDBusConnection bus, QString path);
    ~DbusObject() override;
    Q_DISABLE_COPY_MOVE(DbusObject)

    /// Goes to another bus; it is on this one no more.
    void moveTo(QDBusConnection bus);

    /// Calls of an interface that is not here are refused.
    void add(const QString& name, Interface interface) { interfaces_[name] = std::move(interface); }
    void remove(const QString& name) { interfaces_.erase(name); }

    /// Tells everybody who listens that these properties are others now.
    void tellChanged(const QString& interface, const QVariantMap& properties);

    /// How often it has been called, the call that is being answered included.
    [[nodiscard]] std::uint64_t calls() const { return calls_; }

    [[nodiscard]] QString introspect(const QString& path) const override;
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

private:
    /// None if it is for Qt, which describes the object and knows what else is wrong.
    [[nodiscard]] std::optional<QDBusMessage> answer(const QDBusMessage& call) const;
    [[nodiscard]] QDBusMessage answerOfProperties(const QDBusMessage& call) const;
    [[nodiscard]] QDBusMessage get(const QDBusMessage& call) const;
    [[nodiscard]] QDBusMessage getAll(const QDBusMessage& call) const;
    [[nodiscard]] QDBusMessage set(const QDBusMessage& call) const;
    /// Those that a call means; the empty name means any.
    [[nodiscard]] std::vector<const Interface*> named(const QString& name) const;

    /// Something was asked: hands memory back to the system once nobody asks any more.
    void asked();

    QDBusConnection bus_;
    const QString path_;
    std::map<QString, Interface> interfaces_;
    std::uint64_t calls_ = 0;
    int burst_ = 0;  // questions since there was a pause
    QTimer rest_;
};

}  // namespace sordin
