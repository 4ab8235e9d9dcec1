// SPDX-License-Identifier: MIT
#pragma once

#include <QDateTime>
#include <QString>

namespace sordin {

/// A date in the past as people say it: "now", "5 minutes ago", "yesterday", "last week", "3 years ago". What
/// lies ahead, after a clock was set back, is "now".
[[nodiscard]] QString relativeDate(const QDateTime& date, const QDateTime& now);

/// A date with its time of day to the second, the month abbreviated, as the user's language writes it.
[[nodiscard]] QString dateAndTime(const QDateTime& date);

}  // namespace sordin
