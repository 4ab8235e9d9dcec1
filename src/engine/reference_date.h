// SPDX-License-Identifier: MIT
#pragma once

#include <QDateTime>

namespace sordin {

/// A wall clock time in seconds since 1 January 2001, 00:00 UTC: the date format of the history file.
using ReferenceDate = double;

/// The current time of the system's wall clock.
[[nodiscard]] ReferenceDate currentReferenceDate();

/// Converts to the user's time zone, with a resolution of 1 ms. Clamps to the years 1 to 9999.
[[nodiscard]] QDateTime localDateTime(ReferenceDate date);

}  // namespace sordin
