// SPDX-License-Identifier: MIT
#include "platform/linux/pipewire/graph.h"

#include "platform/linux/desktop/process_application.h"
#include "platform/linux/desktop/shown_name.h"

#include <algorithm>
#include <unistd.h>

namespace sordin::pipewire {

namespace {

std::vector<std::string> applicationIds(const Client& client) {
    if (!client.portalApplication.empty()) {
        return {client.portalApplication};
    }
    auto ids = client.processId ? applicationIdsOf(*client.processId) : std::vector<std::string>();
    if (ids.empty()) {
        ids.push_back(client.claimedId);
    }
    return ids;
}

}  // namespace

std::optional<bool> Graph::isOwn(const Client& client, GlobalId id) const {
    const auto own = ownClient ? clients.find(*ownClient) : clients.end();
    if (own == clients.end() || !own->second.described || !client.described) {
        return std::nullopt;
    }
    if (id == *ownClient) {
        return true;
    }
    if (client.throughPulse) {
        // This process identifier is the one inside a sandbox, where several programs can have the same.
        return client.processId == static_cast<std::int32_t>(getpid()) &&
               client.portalApplication == own->second.portalApplication;
    }
    return client.connectedProcessId.has_value() &&
           client.connectedProcessId == own->second.connectedProcessId;
}

std::optional<std::string> Client::program() const {
    return processId ? std::optional(std::to_string(*processId) + ' ' + portalApplication) : std::nullopt;
}

void Graph::leaveOut(const LeftOut& what) {
    allLeftOut = what.everything;
    for (auto& [id, client] : clients) {
        client.leftOut = false;
        if (what.applications.empty() || !client.described) {
            continue;
        }
        if (!client.applicationIds) {
            client.applicationIds = applicationIds(client);
        }
        client.leftOut = what.holdsAny(*client.applicationIds);
    }
}

bool Graph::isAudible(const Node& node) const {
    if (!node.plays() || !node.described || allLeftOut) {
        return false;
    }
    const Client* client = otherClient(node);
    if (node.client && (client == nullptr || client->leftOut)) {
        return false;
    }
    if (node.linkGroup.empty()) {
        return true;
    }
    return std::any_of(nodes.begin(), nodes.end(), [&node](const auto& entry) {
        const Node& other = entry.second;
        return other.linkGroup == node.linkGroup && other.records() && !other.capturesSink;
    });
}

std::vector<ApplicationStream> Graph::applicationStreams() const {
    using Kind = ApplicationStream::Kind;
    std::vector<ApplicationStream> streams;
    for (const auto& [id, node] : nodes) {
        const Client* client = otherClient(node);
        const bool runs = node.described && node.running && node.linkGroup.empty();
        const bool records = node.records() && !node.capturesSink && !node.metersPeaks && hearsMicrophone(id);
        if (!runs || client == nullptr || !(node.plays() || records)) {
            continue;
        }
        Kind kind = Kind::records;
        if (node.plays()) {
            kind = node.role == "Communication" ? Kind::playsCall : Kind::plays;
        }
        streams.push_back({kind, client->program().value_or("client " + std::to_string(*node.client)),
                           client->processId, shownName(client->name)});
    }
    return streams;
}

const Client* Graph::otherClient(const Node& node) const {
    const auto client = node.client ? clients.find(*node.client) : clients.end();
    return client == clients.end() || isOwn(client->second, client->first).value_or(true) ? nullptr
                                                                                          : &client->second;
}

bool Graph::hearsMicrophone(GlobalId recorder) const {
    return std::any_of(links.begin(), links.end(), [&](const auto& entry) {
        const Link& link = entry.second;
        const auto port = link.inputNode == recorder ? ports.find(link.outputPort) : ports.end();
        if (port == ports.end()) {
            return false;
        }
        // The ports of a virtual microphone are called monitors, too.
        const auto source = nodes.find(port->second.node);
        return source == nodes.end() ||
               !(source->second.plays() || (source->second.isSink() && port->second.monitor));
    });
}

bool Graph::hasSink() const {
    return std::any_of(nodes.begin(), nodes.end(), [](const auto& entry) { return entry.second.isSink(); });
}

}  // namespace sordin::pipewire
