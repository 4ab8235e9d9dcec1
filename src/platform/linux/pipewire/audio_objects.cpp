// SPDX-License-Identifier: MIT
#include "platform/linux/pipewire/audio_objects.h"

#include <algorithm>

namespace sordin::pipewire {

namespace {

using namespace std::chrono_literals;

/// The session manager restores a stored volume a few milliseconds after a sink appears.
constexpr auto settlingTime = 300ms;
/// If the default sink goes and returns, WirePlumber 0.4 sometimes never names a default sink again.
constexpr auto longestWithoutDefault = 5s;
/// How long a sink may take to publish a volume or a route; after that, it counts as a sink without one.
constexpr auto longestArrival = 1s;
/// The session manager stores a volume about a second after it was set.
constexpr auto rememberingTime = 5s;

/// Returns the processes with application streams, and whether any of their streams plays.
std::map<std::int32_t, bool> players(const Graph& graph) {
    std::map<std::int32_t, bool> result;
    for (const auto& entry : graph.nodes) {
        const Node& node = entry.second;
        const auto client =
            node.client && graph.isAudible(node) ? graph.clients.find(*node.client) : graph.clients.end();
        if (client != graph.clients.end() && client->second.processId) {
            bool& plays = result[*client->second.processId];
            plays = plays || node.running;
        }
    }
    return result;
}

}  // namespace

PipeWireAudioObjects::PipeWireAudioObjects(std::shared_ptr<Session> session)
    : ServerAudioObjects(
          std::move(session), [this](GlobalId sink, const VolumeProps& volume) { write(sink, volume); },
          rememberingTime) {
    this->session().add(*this);
}

PipeWireAudioObjects::~PipeWireAudioObjects() {
    session().remove(*this);
}

void PipeWireAudioObjects::disconnecting() {
    arrivals_.clear();
    routes_.clear();
    defaultKnown_.reset();
    sessionManagerStarts_ = 0;
    listed_ = false;
    tell(table().clear());
}

void PipeWireAudioObjects::graphChanged() {
    if (!session().ready()) {
        return;
    }
    const Graph& graph = session().connection()->graph();
    updateArrivals(graph);
    AudioObjectTable::State state{{}, graph.defaultSink, players(graph)};
    routes_.clear();
    for (const auto& [id, node] : graph.nodes) {
        if (auto known = node.isSink() ? sink(graph, id, node) : std::nullopt) {
            state.sinks.push_back(std::move(*known));
        }
    }
    tell(table().update(state));
}

void PipeWireAudioObjects::updateArrivals(const Graph& graph) {
    if (graph.defaultSink.empty()) {
        defaultKnown_.reset();
    } else if (!defaultKnown_) {
        defaultKnown_ = Clock::now();
    }
    if (std::exchange(sessionManagerStarts_, graph.sessionManagerStarts) != graph.sessionManagerStarts) {
        sessionManagerSince_ = Clock::now();
    }
    const bool atBeginning = !std::exchange(listed_, true);
    for (const auto& [id, node] : graph.nodes) {
        if (node.isSink()) {
            const bool settledLongAgo = atBeginning && session().settledWhenListed();
            arrivals_.try_emplace(id, Arrival{Clock::now(), settledLongAgo});
        }
    }
    for (auto arrival = arrivals_.begin(); arrival != arrivals_.end();) {
        arrival = graph.nodes.count(arrival->first) > 0 ? std::next(arrival) : arrivals_.erase(arrival);
    }
}

std::optional<AudioObjectTable::Sink> PipeWireAudioObjects::sink(const Graph& graph, GlobalId id,
                                                                 const Node& node) {
    Arrival& arrival = arrivals_.at(id);
    if (!node.described || !settled(arrival)) {
        return std::nullopt;
    }
    const bool mayStillCome = Clock::now() < arrival.seen + longestArrival;
    if (node.device && node.profileDevice) {
        const auto card = graph.devices.find(*node.device);
        if (card != graph.devices.end()) {
            const auto route = card->second.routes.find(*node.profileDevice);
            if (route != card->second.routes.end() && !route->second.volume.channels.empty()) {
                routes_[id] = {*node.device, *node.profileDevice};
                return AudioObjectTable::Sink{id, node.name, route->second.name, route->second.volume};
            }
        }
        const bool mayHaveRoute =
            card == graph.devices.end() || !card->second.described || card->second.hasRoutes;
        if (mayStillCome && mayHaveRoute) {
            session().refreshAfter(longestArrival);
            return std::nullopt;
        }
    }
    if (mayStillCome && node.volume.channels.empty()) {
        session().refreshAfter(longestArrival);
        return std::nullopt;
    }
    return AudioObjectTable::Sink{id, node.name, {}, node.volume};
}

bool PipeWireAudioObjects::settled(Arrival& arrival) const {
    if (!arrival.settled && (defaultKnown_ || sessionManagerStarts_ > 0)) {
        const auto end = defaultKnown_ ? std::max(arrival.seen, *defaultKnown_) + settlingTime
                                       : std::max(arrival.seen, sessionManagerSince_) + longestWithoutDefault;
        const auto left = end - Clock::now();
        arrival.settled = left <= Clock::duration::zero();
        if (!arrival.settled) {
            session().refreshAfter(std::chrono::ceil<std::chrono::milliseconds>(left));
        }
    }
    return arrival.settled;
}

void PipeWireAudioObjects::write(GlobalId sink, const VolumeProps& volume) const {
    Connection* connection = session().connection();
    const auto route = routes_.find(sink);
    if (connection == nullptr) {
        return;
    }
    if (route != routes_.end()) {
        connection->setRouteVolume(route->second.first, route->second.second, volume);
    } else {
        connection->setNodeVolume(sink, volume);
    }
}

}  // namespace sordin::pipewire
