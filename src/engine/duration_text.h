// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace sordin {

/// A number of seconds as the user reads it: 42s, 2m 05s, 1h 02m. Rounded to whole seconds; from an hour on
/// without the seconds.
[[nodiscard]] QString formatDuration(double seconds);

}  // namespace sordin
