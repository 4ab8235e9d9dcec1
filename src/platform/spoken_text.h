// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace sordin {

/// Spoken words as they would be written where it matters: "call one eight hundred" becomes "call 1 eight
/// hundred", the beginning of a toll-free number. Nothing else changes: what is spoken as "dot com" or
/// "percent off" must not be there in figures as well, or it would count twice.
[[nodiscard]] std::string asWritten(std::string_view spoken);

}  // namespace sordin
