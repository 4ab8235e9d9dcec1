// SPDX-License-Identifier: MIT
#pragma once

#include <QDateTime>
#include <QString>

namespace sordin {

/// Returns a relative date: "now", "5 minutes ago", "yesterday", "last week", "3 years ago". Future dates,
/// which a clock that was set back can cause, are "now".
[[nodiscard]] QString relativeDate(const QDateTime& date, const QDateTime& now);

/// Returns a time of day with seconds, in the short format of the user's locale.
[[nodiscard]] QString timeText(const QTime& time);

/// Returns a date and time with seconds, the month abbreviated, in the format of the user's locale.
[[nodiscard]] QString dateAndTime(const QDateTime& date);

/// Prepares text in any language for use within a longer text. Right-to-left text gets isolating characters
/// (Unicode Standard Annex 9), so that it does not reorder its surroundings.
[[nodiscard]] QString isolated(const QString& text);

}  // namespace sordin
