// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace sordin {

/// Formats a duration for display: 42s, 2m 05s, 1h 02m. Rounds to whole seconds; from one hour on, omits the
/// seconds. NaN counts as 0.
[[nodiscard]] QString formatDuration(double seconds);

}  // namespace sordin
