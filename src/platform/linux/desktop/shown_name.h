// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace sordin {

/// Cleans a name that other programs chose, so that it can be displayed and stored. The result is UTF-8
/// (invalid bytes become U+FFFD) and one line without surrounding blanks. It contains no control characters,
/// including those for text direction, and at most 80 characters; a longer name is cut and ends with "…".
/// Empty if nothing remains.
[[nodiscard]] std::string shownName(std::string_view text);

}  // namespace sordin
