// SPDX-License-Identifier: MIT
#include "platform/linux/pipewire/audio_objects.h"

#include <algorithm>
#include <cmath>

namespace sordin::pipewire {

namespace {

using namespace std::chrono_literals;

/// What the session manager offers where there is no device.
constexpr auto dummySink = "auto_null";
/// The session manager brings remembered volumes back a few milliseconds after a sink has come.
constexpr auto settlingTime = 300ms;
/// WirePlumber 0.4 sometimes names no default ever after when the default sink goes and returns.
constexpr auto longestWithoutDefault = 5s;
/// How long to wait for a volume or a route before taking a sink for one without.
constexpr auto longestArrival = 1s;
/// The session manager stores a volume about a second after it was set.
constexpr auto rememberingTime = 5s;

}  // namespace

PipeWireAudioObjects::PipeWireAudioObjects(std::shared_ptr<Session> session) : session_(std::move(session)) {
    session_->add(*this);
}

PipeWireAudioObjects::~PipeWireAudioObjects() {
    session_->remove(*this);
}

std::optional<AudioPropertyValue> PipeWireAudioObjects::get(AudioObjectId object,
                                                            const AudioProperty& property) const {
    const auto lock = session_->lock();
    if (object == systemAudioObject && property == audio_property::defaultOutputDevice) {
        return defaultDevice();
    }
    if (object == systemAudioObject && property == audio_property::processList) {
        std::vector<AudioObjectId> ids;
        for (const auto& process : processes_) {
            ids.push_back(process.second);
        }
        std::sort(ids.begin(), ids.end());  // as they came
        return ids;
    }
    if (const OutputDevice* device = find(object)) {
        if (device->target && property == audio_property::volume(0) && device->hasVolume) {
            return device->volume.scalar();
        }
        if (device->target && property == audio_property::mute && device->muted) {
            return std::uint32_t{*device->muted ? 1U : 0U};
        }
        return std::nullopt;
    }
    return processProperty(object, property);
}

bool PipeWireAudioObjects::set(AudioObjectId object, const AudioProperty& property,
                               const AudioPropertyValue& value) {
    const auto lock = session_->lock();
    const auto found = devices_.find(object);
    if (found == devices_.end()) {
        return false;
    }
    OutputDevice& device = found->second;
    const auto* volume = std::get_if<float>(&value);
    const auto* mute = std::get_if<std::uint32_t>(&value);
    if (property == audio_property::volume(0) && volume != nullptr && device.hasVolume &&
        std::isfinite(*volume)) {
        const auto channels = device.volume.write(std::clamp(*volume, 0.0F, 1.0F));
        device.lastWrite = Clock::now();
        write(device, {channels, std::nullopt});  // or when it appears
        return true;
    }
    if (property == audio_property::mute && mute != nullptr && device.muted) {
        device.muted = *mute != 0;
        if (device.target) {
            write(device, {{}, device.muted});
        } else {
            device.keptMute = device.muted;
        }
        return true;
    }
    return false;
}

bool PipeWireAudioObjects::has(AudioObjectId object, const AudioProperty& property) const {
    const auto lock = session_->lock();
    const OutputDevice* device = find(object);
    return device != nullptr && ((property == audio_property::volume(0) && device->hasVolume) ||
                                 (property == audio_property::mute && device->muted));
}

bool PipeWireAudioObjects::settable(AudioObjectId object, const AudioProperty& property) const {
    return has(object, property);
}

bool PipeWireAudioObjects::flush(std::chrono::milliseconds deadline) {
    return session_->flush(deadline);
}

std::optional<OutputDeviceRecord> PipeWireAudioObjects::record(AudioObjectId device) const {
    const auto lock = session_->lock();
    const OutputDevice* known = find(device);
    if (known == nullptr) {
        return std::nullopt;
    }
    return OutputDeviceRecord{known->name.first, known->name.second, known->volume.reference(),
                              known->volume.ratios()};
}

AudioObjectId PipeWireAudioObjects::adopt(const OutputDeviceRecord& record) {
    const auto lock = session_->lock();
    const AudioObjectId id = idOf({record.name, record.route});
    devices_.at(id).volume.adopt(record.reference, record.ratios);
    return id;
}

bool PipeWireAudioObjects::present(AudioObjectId device) const {
    const auto lock = session_->lock();
    const OutputDevice* known = find(device);
    return known != nullptr && known->target;
}

void PipeWireAudioObjects::onDevicesChanged(std::function<void()> handler) {
    const auto lock = session_->lock();
    std::swap(onDevicesChanged_, handler);  // the old one ends without the lock
}

void PipeWireAudioObjects::disconnecting() {
    for (auto& entry : devices_) {
        leave(entry.second);
    }
    arrivals_.clear();
    processes_.clear();
    defaultKnown_.reset();
    sessionManagerStarts_ = 0;
    listed_ = false;
    tellChanges();
}

void PipeWireAudioObjects::graphChanged() {
    const Connection* connection = session_->connection();
    if (connection == nullptr || !session_->listed()) {
        return;
    }
    updateDevices(connection->graph());
    updateProcesses(connection->graph());
    tellChanges();
}

void PipeWireAudioObjects::updateDevices(const Graph& graph) {
    if (graph.defaultSink.empty()) {
        defaultKnown_.reset();
    } else if (!defaultKnown_) {
        defaultKnown_ = Clock::now();
    }
    if (std::exchange(sessionManagerStarts_, graph.sessionManagerStarts) != graph.sessionManagerStarts) {
        sessionManagerSince_ = Clock::now();
    }
    const bool atBeginning = !std::exchange(listed_, true);
    std::map<AudioObjectId, Sink> there;
    for (const auto& [id, node] : graph.nodes) {
        if (!node.isSink()) {
            continue;
        }
        const bool settledLongAgo = atBeginning && session_->settledWhenListed();
        arrivals_.try_emplace(id, Arrival{Clock::now(), settledLongAgo});
        if (auto known = sink(graph, id, node)) {
            there.emplace(idOf({node.name, known->route}), std::move(*known));
        }
    }
    for (auto arrival = arrivals_.begin(); arrival != arrivals_.end();) {
        arrival = graph.nodes.count(arrival->first) > 0 ? std::next(arrival) : arrivals_.erase(arrival);
    }
    for (auto& [id, device] : devices_) {
        const auto sink = there.find(id);
        if (sink == there.end()) {
            leave(device);
        } else if (!device.target || device.target->node != sink->second.target.node) {
            appear(device, sink->second);
        } else {
            device.target = sink->second.target;
            device.volume.reported(sink->second.volume.channels);
            device.muted = sink->second.volume.muted;
        }
    }
}

std::optional<PipeWireAudioObjects::Sink> PipeWireAudioObjects::sink(const Graph& graph, GlobalId id,
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
                return Sink{route->second.name,
                            {id, std::pair(*node.device, *node.profileDevice)},
                            route->second.volume};
            }
        }
        const bool mayHaveRoute =
            card == graph.devices.end() || !card->second.described || card->second.hasRoutes;
        if (mayStillCome && mayHaveRoute) {
            session_->refreshAfter(longestArrival);
            return std::nullopt;
        }
    }
    if (mayStillCome && node.volume.channels.empty()) {
        session_->refreshAfter(longestArrival);
        return std::nullopt;
    }
    return Sink{{}, {id, std::nullopt}, node.volume};
}

bool PipeWireAudioObjects::settled(Arrival& arrival) const {
    if (!arrival.settled && (defaultKnown_ || sessionManagerStarts_ > 0)) {
        const auto end = defaultKnown_ ? std::max(arrival.seen, *defaultKnown_) + settlingTime
                                       : std::max(arrival.seen, sessionManagerSince_) + longestWithoutDefault;
        const auto left = end - Clock::now();
        arrival.settled = left <= Clock::duration::zero();
        if (!arrival.settled) {
            session_->refreshAfter(std::chrono::ceil<std::chrono::milliseconds>(left));
        }
    }
    return arrival.settled;
}

void PipeWireAudioObjects::appear(OutputDevice& device, const Sink& sink) {
    device.target = sink.target;
    device.hasVolume = !sink.volume.channels.empty();
    device.muted = sink.volume.muted;
    if (device.hasVolume) {
        if (const auto again = device.volume.appeared(sink.volume.channels); !again.empty()) {
            write(device, {again, std::nullopt});
        }
    }
    if (const auto kept = std::exchange(device.keptMute, std::nullopt); kept && device.muted) {
        device.muted = kept;
        write(device, {{}, kept});
    }
}

void PipeWireAudioObjects::leave(OutputDevice& device) {
    if (device.target && Clock::now() > device.lastWrite + rememberingTime) {
        device.volume.writeRemembered();
    }
    device.target.reset();
}

void PipeWireAudioObjects::updateProcesses(const Graph& graph) {
    std::map<std::int32_t, AudioObjectId> there;
    for (const auto& entry : graph.nodes) {
        const Node& node = entry.second;
        const auto client =
            node.client && graph.isAudible(node) ? graph.clients.find(*node.client) : graph.clients.end();
        if (client != graph.clients.end() && client->second.processId) {
            there[*client->second.processId] = 0;
        }
    }
    for (auto& [processId, id] : there) {
        const auto known = processes_.find(processId);
        id = known != processes_.end() ? known->second : ++lastId_;
    }
    processes_ = std::move(there);
}

void PipeWireAudioObjects::tellChanges() {
    std::vector<AudioObjectId> now{defaultDevice()};
    for (const auto& [id, device] : devices_) {
        if (device.target) {
            now.push_back(id);
        }
    }
    if (now != told_) {
        told_ = std::move(now);
        if (onDevicesChanged_) {
            onDevicesChanged_();
        }
    }
}

AudioObjectId PipeWireAudioObjects::idOf(const Name& name) {
    for (const auto& [id, device] : devices_) {
        if (device.name == name) {
            return id;
        }
    }
    devices_[++lastId_].name = name;
    return lastId_;
}

const PipeWireAudioObjects::OutputDevice* PipeWireAudioObjects::find(AudioObjectId id) const {
    const auto found = devices_.find(id);
    return found != devices_.end() ? &found->second : nullptr;
}

AudioObjectId PipeWireAudioObjects::defaultDevice() const {
    const Connection* connection = session_->connection();
    if (connection == nullptr || connection->graph().defaultSink == dummySink) {
        return 0;
    }
    for (const auto& [id, device] : devices_) {
        if (device.target && device.name.first == connection->graph().defaultSink) {
            return id;
        }
    }
    return 0;
}

std::optional<AudioPropertyValue> PipeWireAudioObjects::processProperty(AudioObjectId id,
                                                                        const AudioProperty& property) const {
    const auto process = std::find_if(processes_.begin(), processes_.end(),
                                      [id](const auto& entry) { return entry.second == id; });
    const Connection* connection = session_->connection();
    if (process == processes_.end() || connection == nullptr) {
        return std::nullopt;
    }
    if (property == audio_property::processId) {
        return process->first;
    }
    if (property != audio_property::isRunningOutput) {
        return std::nullopt;
    }
    const Graph& graph = connection->graph();
    const bool running = std::any_of(graph.nodes.begin(), graph.nodes.end(), [&](const auto& entry) {
        const Node& node = entry.second;
        const auto client = node.client ? graph.clients.find(*node.client) : graph.clients.end();
        return node.running && client != graph.clients.end() && client->second.processId == process->first &&
               graph.isAudible(node);
    });
    return std::uint32_t{running ? 1U : 0U};
}

void PipeWireAudioObjects::write(const OutputDevice& device, const VolumeProps& volume) const {
    Connection* connection = session_->connection();
    if (connection == nullptr || !device.target) {
        return;
    }
    if (const auto& route = device.target->route) {
        connection->setRouteVolume(route->first, route->second, volume);
    } else {
        connection->setNodeVolume(device.target->node, volume);
    }
}

}  // namespace sordin::pipewire
