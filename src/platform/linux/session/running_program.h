// SPDX-License-Identifier: MIT
#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QString>
#include <QVariantMap>
#include <optional>
#include <variant>

namespace sordin {

/// Calls a method of org.sordin.Sordin1 that takes nothing, of the program that is running in the user's
/// session; starts none. Waits for the answer, ten seconds at most. Returns what went wrong, as something
/// that can be said of the program ("is not running"); none if it was done.
[[nodiscard]] std::optional<QString> callRunningProgram(const QDBusConnection& bus, const QString& method);

/// The properties of org.sordin.Sordin1 of that program, or what went wrong; waits as callRunningProgram().
[[nodiscard]] std::variant<QVariantMap, QString> propertiesOfRunningProgram(const QDBusConnection& bus);

/// The call that asks for these.
[[nodiscard]] QDBusMessage statusQuestion();

}  // namespace sordin
