// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace sordin {

/// Returns candidates for the identifier of a process's application, best first: the identifier that it was
/// started as (Flatpak's own record, else its systemd unit or snap scope), then the name of its executable.
/// Reads a few small files of `proc`. Empty if there is no such process.
[[nodiscard]] std::vector<std::string> applicationIdsOf(std::int32_t processId,
                                                        const std::filesystem::path& proc = "/proc");

}  // namespace sordin
