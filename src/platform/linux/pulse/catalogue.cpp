// SPDX-License-Identifier: MIT
#include "platform/linux/pulse/catalogue.h"

#include "platform/linux/desktop/process_application.h"
#include "platform/linux/desktop/shown_name.h"

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

void Catalogue::leaveOut(const LeftOut& what) {
    allLeftOut = what.everything;
    for (auto& [index, client] : clients) {
        if (!what.applications.empty() && !client.applicationIds) {
            client.applicationIds = client.processId ? applicationIdsOf(*client.processId)
                                                     : std::vector<std::string>{client.claimedId};
        }
        client.leftOut = !what.applications.empty() && what.holdsAny(*client.applicationIds);
    }
}

bool Catalogue::isAudible(const Player& player) const {
    const Client* client = otherClient(player.client);
    if (allLeftOut || (player.client && (client == nullptr || client->leftOut))) {
        return false;
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
    return takesSound(player) && isAudible(player);
}

std::vector<ApplicationStream> Catalogue::applicationStreams() const {
    using Kind = ApplicationStream::Kind;
    std::vector<ApplicationStream> streams;
    const auto add = [&](const std::optional<Index>& index, Kind kind) {
        if (const Client* client = otherClient(index)) {
            const std::string known =
                client->processId ? std::to_string(*client->processId) : client->claimedProcess;
            streams.push_back({kind, known.empty() ? "client " + std::to_string(*index) : known,
                               client->processId, shownName(client->name)});
        }
    };
    for (const auto& [index, player] : players) {
        if (takesSound(player)) {
            add(player.client, player.call ? Kind::playsCall : Kind::plays);
        }
    }
    for (const auto& [index, recorder] : recorders) {
        if (!recorder.paused && !recorder.metersPeaks && !isMonitor(recorder.source)) {
            add(recorder.client, Kind::records);
        }
    }
    return streams;
}

const Client* Catalogue::otherClient(const std::optional<Index>& client) const {
    const auto found = client ? clients.find(*client) : clients.end();
    return found == clients.end() || found->second.processId == getpid() ? nullptr : &found->second;
}

bool Catalogue::takesSound(const Player& player) const {
    const auto sink = sinks.find(player.sink);
    return !player.paused && sink != sinks.end() && sink->second.running;
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
        // The executable of another user's process cannot be read.
        return error == std::errc::permission_denied ? std::optional(process) : std::nullopt;
    }
    constexpr auto replaced = " (deleted)";  // an update replaced the file
    const bool same = binary.empty() || file == binary || file == binary + replaced;
    return same ? std::optional(process) : std::nullopt;
}

}  // namespace sordin::pulse
