// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <filesystem>
#include <optional>

namespace sordin::pipewire {

/// The socket at which programs look for a PulseAudio server.
[[nodiscard]] std::filesystem::path pulseSocket();

/// Asks whoever answers at a PulseAudio socket who it is: whether that is anybody else than PipeWire. Nothing
/// is known if nobody answers within `deadline`, which is how long this may wait.
[[nodiscard]] std::optional<bool> isOtherPulseServer(const std::filesystem::path& socket,
                                                     std::chrono::milliseconds deadline);

}  // namespace sordin::pipewire
