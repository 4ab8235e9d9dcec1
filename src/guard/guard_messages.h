// SPDX-License-Identifier: MIT
// What the program tells its volume guard: messages of JSON text, each the whole truth, so that only the last
// one counts.
#pragma once

#include "volume/volume_guard.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace sordin {

/// No message is longer, in bytes.
inline constexpr std::size_t longestGuardMessage = 16'384;

/// Says what is in force, or that nothing is.
[[nodiscard]] std::string toGuardMessage(const std::optional<DuckInForce>& duck);

/// Takes what a message says into `duck`. False if it is no such message: `duck` is then as it was.
[[nodiscard]] bool readGuardMessage(std::string_view text, std::optional<DuckInForce>& duck);

}  // namespace sordin
