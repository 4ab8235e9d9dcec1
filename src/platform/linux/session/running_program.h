// SPDX-License-Identifier: MIT
#pragma once

#include <QDBusConnection>
#include <QString>
#include <optional>

namespace sordin {

/// Calls a method of org.sordin.Sordin1 that takes nothing, of the program that is running in the user's
/// session; starts none. Waits for the answer, ten seconds at most. Returns what went wrong, as something
/// that can be said of the program ("is not running"); none if it was done.
[[nodiscard]] std::optional<QString> callRunningProgram(const QDBusConnection& bus, const QString& method);

}  // namespace sordin
