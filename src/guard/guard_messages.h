// SPDX-License-Identifier: MIT
// Messages from the program to its volume guard, as JSON text. Each contains the complete state, so only the
// last one counts.
#pragma once

#include "volume/volume_guard.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace sordin {

/// Maximum length of a message, bytes.
inline constexpr std::size_t longestGuardMessage = 16'384;

/// Encodes the duck in force, or that there is none.
[[nodiscard]] std::string toGuardMessage(const std::optional<DuckInForce>& duck);

/// Decodes a message into `duck`. Returns false and leaves `duck` unchanged if the message is invalid.
[[nodiscard]] bool readGuardMessage(std::string_view text, std::optional<DuckInForce>& duck);

}  // namespace sordin
