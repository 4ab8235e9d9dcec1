// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace sordin {

/// A name that others have chosen, as it can be shown and kept: UTF-8 (what is none becomes U+FFFD), one line
/// without blanks around it, without characters that control anything (the direction of what follows, too),
/// and at most 80 characters, the last of which is then "…". Empty if nothing is left.
[[nodiscard]] std::string shownName(std::string_view text);

}  // namespace sordin
