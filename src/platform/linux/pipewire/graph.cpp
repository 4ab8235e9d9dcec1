// SPDX-License-Identifier: MIT
#include "platform/linux/pipewire/graph.h"

#include <algorithm>
#include <unistd.h>

namespace sordin::pipewire {

std::optional<bool> Graph::isOwn(const Client& client, GlobalId id) const {
    const auto own = ownClient ? clients.find(*ownClient) : clients.end();
    if (own == clients.end() || !own->second.described || !client.described) {
        return std::nullopt;
    }
    if (id == *ownClient) {
        return true;
    }
    if (client.throughPulse) {
        // That is the number inside its sandbox, where several programs may have the same.
        return client.processId == static_cast<std::int32_t>(getpid()) &&
               client.portalApplication == own->second.portalApplication;
    }
    return client.connectedProcessId.has_value() &&
           client.connectedProcessId == own->second.connectedProcessId;
}

bool Graph::isAudible(const Node& node) const {
    if (!node.plays() || !node.described) {
        return false;
    }
    if (node.client) {
        const auto client = clients.find(*node.client);
        if (client == clients.end() || isOwn(client->second, client->first).value_or(true)) {
            return false;
        }
    }
    if (node.linkGroup.empty()) {
        return true;
    }
    return std::any_of(nodes.begin(), nodes.end(), [&node](const auto& entry) {
        const Node& other = entry.second;
        return other.linkGroup == node.linkGroup && other.records() && !other.capturesSink;
    });
}

bool Graph::hasSink() const {
    return std::any_of(nodes.begin(), nodes.end(), [](const auto& entry) { return entry.second.isSink(); });
}

}  // namespace sordin::pipewire
