// SPDX-License-Identifier: MIT
#pragma once

#include <QDateTime>
#include <QString>

namespace sordin {

/// A date in the past as people say it: "now", "5 minutes ago", "yesterday", "last week", "3 years ago". What
/// lies ahead, after a clock was set back, is "now".
[[nodiscard]] QString relativeDate(const QDateTime& date, const QDateTime& now);

/// A time of day to the second, in the short form of the user's locale.
[[nodiscard]] QString timeText(const QTime& time);

/// A date with its time of day to the second, the month abbreviated, in the form of the user's locale.
[[nodiscard]] QString dateAndTime(const QDateTime& date);

/// Text that may be of any language as a part of a longer one. Text written from right to left gets isolating
/// characters (Unicode Standard Annex 9), so that it does not turn the order of the parts around.
[[nodiscard]] QString isolated(const QString& text);

}  // namespace sordin
