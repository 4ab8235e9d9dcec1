// SPDX-License-Identifier: MIT
#include "platform/linux/session/dbus_object.h"

#include <QDBusVariant>
#include <malloc.h>
#include <utility>

namespace sordin {

namespace {

const QString propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");

const QString introspectableInterface = QStringLiteral("org.freedesktop.DBus.Introspectable");

/// The number of calls without a pause after which introspection is refused. A client that calls this often
/// may not read the replies, which then accumulate in memory; introspection replies are the longest.
constexpr int longestBurst = 1000;

QDBusMessage refusal(const QDBusMessage& call, QDBusError::ErrorType error, const QString& reason) {
    return call.createErrorReply(error, reason);
}

QDBusMessage wrongArguments(const QDBusMessage& call, const QString& right) {
    return refusal(call, QDBusError::InvalidArgs,
                   QStringLiteral("%1 takes \"%2\", not \"%3\"").arg(call.member(), right, call.signature()));
}

QDBusMessage unknownMethod(const QDBusMessage& call) {
    return refusal(call, QDBusError::UnknownMethod, QStringLiteral("Unknown method %1").arg(call.member()));
}

QDBusMessage unknownProperty(const QDBusMessage& call) {
    return refusal(call, QDBusError::UnknownProperty, QStringLiteral("Unknown property"));
}

QDBusMessage unknownInterface(const QDBusMessage& call) {
    return refusal(call, QDBusError::UnknownInterface, QStringLiteral("Unknown interface"));
}

QString text(const QDBusMessage& call, qsizetype index) {
    return call.arguments().at(index).toString();
}

}  // namespace

DbusObject::DbusObject(QDBusConnection bus, QString path) : bus_(std::move(bus)), path_(std::move(path)) {
    bus_.registerVirtualObject(path_, this);
    rest_.setSingleShot(true);
    connect(&rest_, &QTimer::timeout, this, [this] {
        burst_ = 0;
        malloc_trim(0);
    });
}

void DbusObject::moveTo(QDBusConnection bus) {
    bus_.unregisterObject(path_);
    bus_ = std::move(bus);
    bus_.registerVirtualObject(path_, this);
}

void DbusObject::asked() {
    constexpr int pause = 5'000;  // milliseconds
    if (++burst_ > longestBurst) {
        rest_.start(pause);
    }
}

DbusObject::~DbusObject() {
    bus_.unregisterObject(path_);
}

void DbusObject::tellChanged(const QString& interface, const QVariantMap& properties) {
    auto signal = QDBusMessage::createSignal(path_, propertiesInterface, QStringLiteral("PropertiesChanged"));
    signal << interface << properties << QStringList();
    bus_.send(signal);
}

QString DbusObject::introspect(const QString& /*path*/) const {
    QString all;
    for (const auto& [name, interface] : interfaces_) {
        all += interface.description + QLatin1Char('\n');
    }
    return all;
}

bool DbusObject::handleMessage(const QDBusMessage& message, const QDBusConnection& connection) {
    ++calls_;
    asked();
    const auto reply =
        burst_ > longestBurst && message.interface() == introspectableInterface
            ? message.createErrorReply(QDBusError::LimitsExceeded, QStringLiteral("Too many calls"))
            : answer(message);
    if (reply && message.isReplyRequired()) {
        connection.send(*reply);
    }
    return reply.has_value();
}

std::optional<QDBusMessage> DbusObject::answer(const QDBusMessage& call) const {
    if (call.interface() == propertiesInterface) {
        return answerOfProperties(call);
    }
    const auto meant = named(call.interface());
    for (const Interface* interface : meant) {
        if (const auto found = interface->methods.find(call.member()); found != interface->methods.end()) {
            const Method& method = found->second;
            return call.signature() == method.arguments ? method.answer(call)
                                                        : wrongArguments(call, method.arguments);
        }
    }
    if (meant.empty() || call.interface().isEmpty()) {
        return std::nullopt;
    }
    return unknownMethod(call);
}

QDBusMessage DbusObject::answerOfProperties(const QDBusMessage& call) const {
    using Answer = QDBusMessage (DbusObject::*)(const QDBusMessage&) const;
    struct Known {
        const char* member;
        const char* arguments;
        Answer answer;
    };
    for (const auto& [member, arguments, answer] :
         {Known{"Get", "ss", &DbusObject::get}, Known{"GetAll", "s", &DbusObject::getAll},
          Known{"Set", "ssv", &DbusObject::set}}) {
        if (call.member() == QLatin1String(member)) {
            return call.signature() == QLatin1String(arguments)
                       ? (this->*answer)(call)
                       : wrongArguments(call, QLatin1String(arguments));
        }
    }
    return unknownMethod(call);
}

QDBusMessage DbusObject::get(const QDBusMessage& call) const {
    const auto meant = named(text(call, 0));
    for (const Interface* interface : meant) {
        const QVariantMap properties = interface->properties ? interface->properties() : QVariantMap();
        if (const auto found = properties.find(text(call, 1)); found != properties.end()) {
            return call.createReply(QVariant::fromValue(QDBusVariant(*found)));
        }
    }
    return meant.empty() ? unknownInterface(call) : unknownProperty(call);
}

QDBusMessage DbusObject::getAll(const QDBusMessage& call) const {
    const auto meant = named(text(call, 0));
    QVariantMap all;
    for (const Interface* interface : meant) {
        if (interface->properties) {
            all.insert(interface->properties());
        }
    }
    return meant.empty() ? unknownInterface(call) : call.createReply(all);
}

QDBusMessage DbusObject::set(const QDBusMessage& call) const {
    const QString name = text(call, 1);
    const QVariant value = call.arguments().at(2).value<QDBusVariant>().variant();
    const auto meant = named(text(call, 0));
    for (const Interface* interface : meant) {
        const QVariantMap properties = interface->properties ? interface->properties() : QVariantMap();
        if (!properties.contains(name)) {
            continue;
        }
        const auto writer = interface->writers.find(name);
        if (writer == interface->writers.end()) {
            return refusal(call, QDBusError::PropertyReadOnly, QStringLiteral("%1 is read-only").arg(name));
        }
        if (value.metaType() != properties.value(name).metaType()) {
            return refusal(call, QDBusError::InvalidArgs,
                           QStringLiteral("The value has the wrong type for %1").arg(name));
        }
        writer->second(value);
        return call.createReply();
    }
    return meant.empty() ? unknownInterface(call) : unknownProperty(call);
}

std::vector<const DbusObject::Interface*> DbusObject::named(const QString& name) const {
    std::vector<const Interface*> all;
    for (const auto& [each, interface] : interfaces_) {
        if (name.isEmpty() || name == each) {
            all.push_back(&interface);
        }
    }
    return all;
}

}  // namespace sordin
