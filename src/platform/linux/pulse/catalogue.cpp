// SPDX-License-Identifier: MIT
#include "platform/linux/pulse/catalogue.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <system_error>
#include <unistd.h>

namespace sordin::pulse {

std::optional<std::int32_t> Catalogue::processOf(const Player& player) const {
    const auto client = player.client ? clients.find(*player.client) : clients.end();
    return client != clients.end() ? client->second.processId : std::nullopt;
}

bool Catalogue::isAudible(const Player& player) const {
    if (processOf(player) == getpid()) {
        return false;
    }
    if (player.client && clients.count(*player.client) == 0) {
        return false;  // not known yet; it may be ours
    }
    if (player.client || !player.module) {
        return true;
    }
    const auto ofSameModule = [&player](const auto& entry) { return entry.second.module == player.module; };
    return std::none_of(sinks.begin(), sinks.end(), ofSameModule) &&
           std::none_of(recorders.begin(), recorders.end(), [&](const auto& entry) {
               return ofSameModule(entry) && isMonitor(entry.second.source);
           });
}

bool Catalogue::plays(const Player& player) const {
    const auto sink = sinks.find(player.sink);
    return !player.paused && sink != sinks.end() && sink->second.running && isAudible(player);
}

bool Catalogue::isMonitor(Index source) const {
    return std::any_of(sinks.begin(), sinks.end(),
                       [source](const auto& entry) { return entry.second.monitor == source; });
}

std::optional<std::int32_t> processHere(const std::string& id, const std::string& binary) {
    std::int32_t process = 0;
    const auto* end = id.data() + id.size();
    const auto parsed = std::from_chars(id.data(), end, process);
    if (parsed.ec != std::errc() || parsed.ptr != end || process <= 0) {
        return std::nullopt;
    }
    std::error_code error;
    const auto file = std::filesystem::read_symlink("/proc/" + id + "/exe", error).filename().string();
    if (error) {
        // Another user's cannot be read.
        return error == std::errc::permission_denied ? std::optional(process) : std::nullopt;
    }
    constexpr auto replaced = " (deleted)";  // by an update
    const bool same = binary.empty() || file == binary || file == binary + replaced;
    return same ? std::optional(process) : std::nullopt;
}

}  // namespace sordin::pulse
