// SPDX-License-Identifier: MIT
#pragma once

#include <QDateTime>

namespace sordin {

/// A moment of the wall clock in seconds since 1 January 2001, 00:00 UTC: how the history file holds dates.
using ReferenceDate = double;

/// The wall clock, as the user has set it.
[[nodiscard]] ReferenceDate currentReferenceDate();

/// The moment in the user's time zone, to the millisecond; moments before the year 1 or after 9999 count as
/// these ends.
[[nodiscard]] QDateTime localDateTime(ReferenceDate date);

}  // namespace sordin
