// SPDX-License-Identifier: MIT
#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QString>
#include <QVariantMap>
#include <optional>
#include <variant>

namespace sordin {

/// Calls a method of org.sordin.Sordin1 without arguments in the program that runs in the user's session,
/// without starting it. Waits for the reply, at most ten seconds. Returns an error message that continues a
/// sentence about the program ("is not running"), or none on success.
[[nodiscard]] std::optional<QString> callRunningProgram(const QDBusConnection& bus, const QString& method);

/// Returns the properties of org.sordin.Sordin1 or an error message. Waits like callRunningProgram().
[[nodiscard]] std::variant<QVariantMap, QString> propertiesOfRunningProgram(const QDBusConnection& bus);

/// Returns the call that requests these properties.
[[nodiscard]] QDBusMessage statusQuestion();

}  // namespace sordin
