// SPDX-License-Identifier: MIT
#include "platform/linux/pipewire/connection.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <limits>
#include <span>
#include <string_view>
#include <utility>

namespace sordin::pipewire {

struct Connection::Bound {
    Bound(Connection& owner, GlobalId number, pw_proxy* newProxy)
        : connection(owner), id(number), proxy(newProxy) {}

    Connection& connection;
    const GlobalId id;
    const ProxyPointer proxy;
    Hook hook;  // removed before the proxy is destroyed

    template <class Interface>
    [[nodiscard]] Interface* as() const {
        return static_cast<Interface*>(static_cast<void*>(proxy.get()));
    }
};

namespace {

std::string text(const spa_dict* properties, const char* key) {
    const char* value = properties != nullptr ? spa_dict_lookup(properties, key) : nullptr;
    return value != nullptr ? value : "";
}

template <class Number>
std::optional<Number> number(const spa_dict* properties, const char* key) {
    const std::string digits = text(properties, key);
    Number value{};
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    return !digits.empty() && error == std::errc() && end == digits.data() + digits.size()
               ? std::optional(value)
               : std::nullopt;
}

bool isTrue(const spa_dict* properties, const char* key) {
    const std::string value = text(properties, key);
    return value == "true" || value == "1";
}

constexpr auto askAgainDelay = std::chrono::milliseconds(200);
constexpr auto metadataInterval = std::chrono::seconds(2);
constexpr auto all = std::numeric_limits<std::uint32_t>::max();

bool isReadable(std::span<const spa_param_info> params, std::uint32_t id) {
    return std::any_of(params.begin(), params.end(), [id](const spa_param_info& param) {
        return param.id == id && (param.flags & SPA_PARAM_INFO_READ) != 0;
    });
}

}  // namespace

std::unique_ptr<Connection> Connection::open(pw_context* context, Events events) {
    CorePointer core(pw_context_connect(context, nullptr, 0));
    if (!core) {
        return nullptr;
    }
    try {
        std::unique_ptr<Connection> connection(new Connection(context, std::move(core), std::move(events)));
        connection->startListening();
        return connection;
    } catch (const std::runtime_error&) {  // no file descriptor was left for the loop
        return nullptr;
    }
}

Connection::Connection(pw_context* context, CorePointer core, Events events)
    : events_(std::move(events)),
      core_(std::move(core)),
      toAskAgain_(pw_context_get_main_loop(context), askAgainDelay, [this](GlobalId id) { askAgain(id); }) {}

Connection::~Connection() = default;

void Connection::startListening() {
    static const pw_core_events coreEvents = [] {
        pw_core_events events{};
        events.version = PW_VERSION_CORE_EVENTS;
        events.done = [](void* data, std::uint32_t id, int sequence) {
            if (id == PW_ID_CORE) {
                static_cast<Connection*>(data)->events_.synchronised(sequence);
            }
        };
        events.error = [](void* data, std::uint32_t id, int /*sequence*/, int result,
                          const char* /*message*/) {
            if (id == PW_ID_CORE && result == -EPIPE) {
                static_cast<Connection*>(data)->events_.lost();
            }
        };
        return events;
    }();
    pw_core_add_listener(core_.get(), coreHook_.get(), &coreEvents, this);

    static const pw_client_events ownClientEvents = [] {
        pw_client_events events{};
        events.version = PW_VERSION_CLIENT_EVENTS;
        events.info = [](void* data, const pw_client_info* info) {
            static_cast<Connection*>(data)->graph_.ownClient = info->id;
        };
        return events;
    }();
    pw_client_add_listener(pw_core_get_client(core_.get()), ownClientHook_.get(), &ownClientEvents, this);

    static const pw_registry_events registryEvents = [] {
        pw_registry_events events{};
        events.version = PW_VERSION_REGISTRY_EVENTS;
        events.global = [](void* data, std::uint32_t id, std::uint32_t /*permissions*/, const char* type,
                           std::uint32_t /*version*/, const spa_dict* properties) {
            static_cast<Connection*>(data)->onGlobal(id, type, properties);
        };
        events.global_remove = [](void* data, std::uint32_t id) {
            static_cast<Connection*>(data)->onGlobalRemoved(id);
        };
        return events;
    }();
    auto* registry = pw_core_get_registry(core_.get(), PW_VERSION_REGISTRY, 0);
    registry_.reset(static_cast<pw_proxy*>(static_cast<void*>(registry)));
    pw_registry_add_listener(registry, registryHook_.get(), &registryEvents, this);
}

int Connection::synchronise() {
    return pw_core_sync(core_.get(), PW_ID_CORE, 0);
}

void Connection::setNodeVolume(GlobalId node, const VolumeProps& volume) {
    const auto found = bound_.find(node);
    if (found == bound_.end() || graph_.nodes.count(node) == 0) {
        return;
    }
    const Pod pod = Pod::ofProps(volume);
    static_cast<void>(pw_node_set_param(found->second->as<pw_node>(), SPA_PARAM_Props, 0, pod.get()));
}

void Connection::setRouteVolume(GlobalId device, int profileDevice, const VolumeProps& volume) {
    const auto found = bound_.find(device);
    const auto known = graph_.devices.find(device);
    if (found == bound_.end() || known == graph_.devices.end()) {
        return;
    }
    const auto route = known->second.routes.find(profileDevice);
    if (route == known->second.routes.end()) {
        return;
    }
    const Pod pod = Pod::ofRoute(route->second, volume);
    static_cast<void>(pw_device_set_param(found->second->as<pw_device>(), SPA_PARAM_Route, 0, pod.get()));
}

Connection::Bound* Connection::bind(GlobalId id, const char* type, std::uint32_t version) {
    auto* registry = static_cast<pw_registry*>(static_cast<void*>(registry_.get()));
    auto* proxy = static_cast<pw_proxy*>(pw_registry_bind(registry, id, type, version, 0));
    if (proxy == nullptr) {
        return nullptr;
    }
    auto& place = bound_[id];
    place = std::make_unique<Bound>(*this, id, proxy);
    return place.get();
}

void Connection::onGlobal(GlobalId id, const char* type, const spa_dict* properties) {
    const std::string_view kind = type;
    if (kind == PW_TYPE_INTERFACE_Node) {
        addNode(id, properties);
    } else if (kind == PW_TYPE_INTERFACE_Port) {
        graph_.ports[id] = {number<GlobalId>(properties, PW_KEY_NODE_ID).value_or(PW_ID_ANY),
                            text(properties, PW_KEY_PORT_DIRECTION) == "out",
                            isTrue(properties, PW_KEY_PORT_MONITOR), text(properties, PW_KEY_AUDIO_CHANNEL)};
        events_.changed();
    } else if (kind == PW_TYPE_INTERFACE_Link) {
        graph_.links[id] = {number<GlobalId>(properties, PW_KEY_LINK_OUTPUT_PORT).value_or(PW_ID_ANY),
                            number<GlobalId>(properties, PW_KEY_LINK_INPUT_NODE).value_or(PW_ID_ANY)};
        events_.changed();
    } else if (kind == PW_TYPE_INTERFACE_Client) {
        addClient(id);
    } else if (kind == PW_TYPE_INTERFACE_Device && text(properties, PW_KEY_MEDIA_CLASS) == "Audio/Device") {
        addDevice(id);
    } else if (kind == PW_TYPE_INTERFACE_Metadata && text(properties, PW_KEY_METADATA_NAME) == "default") {
        addMetadata(id);
    }
}

void Connection::addNode(GlobalId id, const spa_dict* properties) {
    Node node;
    node.name = text(properties, PW_KEY_NODE_NAME);
    node.mediaClass = text(properties, PW_KEY_MEDIA_CLASS);
    node.client = number<GlobalId>(properties, PW_KEY_CLIENT_ID);
    Bound* bound = nullptr;
    if ((node.plays() || node.records() || node.isSink())) {
        bound = bind(id, PW_TYPE_INTERFACE_Node, PW_VERSION_NODE);
    }
    if (bound == nullptr) {
        return;
    }
    static const pw_node_events nodeEvents = [] {
        pw_node_events events{};
        events.version = PW_VERSION_NODE_EVENTS;
        events.info = [](void* data, const pw_node_info* info) {
            auto* self = static_cast<Bound*>(data);
            self->connection.onNodeInfo(self->id, *info);
        };
        events.param = [](void* data, int /*sequence*/, std::uint32_t param, std::uint32_t /*index*/,
                          std::uint32_t /*next*/, const spa_pod* pod) {
            auto* self = static_cast<Bound*>(data);
            self->connection.onParam(self->id, param, pod);
        };
        return events;
    }();
    pw_node_add_listener(bound->as<pw_node>(), bound->hook.get(), &nodeEvents, bound);
    graph_.nodes[id] = std::move(node);
    events_.changed();
}

void Connection::addClient(GlobalId id) {
    Bound* bound = bind(id, PW_TYPE_INTERFACE_Client, PW_VERSION_CLIENT);
    if (bound == nullptr) {
        return;
    }
    static const pw_client_events clientEvents = [] {
        pw_client_events events{};
        events.version = PW_VERSION_CLIENT_EVENTS;
        events.info = [](void* data, const pw_client_info* info) {
            auto* self = static_cast<Bound*>(data);
            self->connection.onClientInfo(self->id, *info);
        };
        return events;
    }();
    pw_client_add_listener(bound->as<pw_client>(), bound->hook.get(), &clientEvents, bound);
    graph_.clients[id] = {};
    if (metadata_) {
        // While a PipeWire 0.3.65 server sends the metadata to a new client, it reports changes only to that
        // client, so this connection may have missed one.
        toAskAgain_.request(*metadata_);
    }
}

void Connection::addDevice(GlobalId id) {
    Bound* bound = bind(id, PW_TYPE_INTERFACE_Device, PW_VERSION_DEVICE);
    if (bound == nullptr) {
        return;
    }
    static const pw_device_events deviceEvents = [] {
        pw_device_events events{};
        events.version = PW_VERSION_DEVICE_EVENTS;
        events.info = [](void* data, const pw_device_info* info) {
            auto* self = static_cast<Bound*>(data);
            self->connection.onDeviceInfo(self->id, *info);
        };
        events.param = [](void* data, int /*sequence*/, std::uint32_t param, std::uint32_t /*index*/,
                          std::uint32_t /*next*/, const spa_pod* pod) {
            auto* self = static_cast<Bound*>(data);
            self->connection.onParam(self->id, param, pod);
        };
        return events;
    }();
    pw_device_add_listener(bound->as<pw_device>(), bound->hook.get(), &deviceEvents, bound);
    graph_.devices[id] = {};
}

void Connection::addMetadata(GlobalId id) {
    if (listenToMetadata(id)) {
        metadata_ = id;
        ++graph_.sessionManagerStarts;
        events_.changed();
    }
}

bool Connection::listenToMetadata(GlobalId id) {
    Bound* bound = bind(id, PW_TYPE_INTERFACE_Metadata, PW_VERSION_METADATA);
    if (bound == nullptr) {
        return false;
    }
    static const pw_metadata_events metadataEvents = [] {
        pw_metadata_events events{};
        events.version = PW_VERSION_METADATA_EVENTS;
        events.property = [](void* data, std::uint32_t subject, const char* key, const char* /*type*/,
                             const char* value) {
            if (subject == PW_ID_CORE) {
                static_cast<Bound*>(data)->connection.onMetadata(key, value);
            }
            return 0;
        };
        return events;
    }();
    pw_metadata_add_listener(bound->as<pw_metadata>(), bound->hook.get(), &metadataEvents, bound);
    return true;
}

void Connection::onGlobalRemoved(GlobalId id) {
    bound_.erase(id);
    bool known = graph_.nodes.erase(id) + graph_.ports.erase(id) + graph_.links.erase(id) +
                     graph_.clients.erase(id) + graph_.devices.erase(id) >
                 0;
    if (metadata_ == id) {
        metadata_.reset();
        graph_.defaultSink.clear();
        known = true;
    }
    if (known) {
        events_.changed();
    }
}

void Connection::onNodeInfo(GlobalId id, const pw_node_info& info) {
    Node& node = graph_.nodes[id];
    node.running = info.state == PW_NODE_STATE_RUNNING;
    if ((info.change_mask & PW_NODE_CHANGE_MASK_PROPS) != 0 && info.props != nullptr) {
        node.linkGroup = text(info.props, PW_KEY_NODE_LINK_GROUP);
        node.role = text(info.props, PW_KEY_MEDIA_ROLE);
        node.metersPeaks = isTrue(info.props, PW_KEY_STREAM_MONITOR);
        node.capturesSink = isTrue(info.props, PW_KEY_STREAM_CAPTURE_SINK);
        node.device = number<GlobalId>(info.props, PW_KEY_DEVICE_ID);
        node.profileDevice = number<int>(info.props, "card.profile.device");
        node.described = true;
    }
    if (node.isSink() && (info.change_mask & PW_NODE_CHANGE_MASK_PARAMS) != 0 &&
        isReadable({info.params, info.n_params}, SPA_PARAM_Props)) {
        askVolume(id);
    }
    events_.changed();
}

void Connection::onClientInfo(GlobalId id, const pw_client_info& info) {
    if (info.props == nullptr) {
        return;
    }
    Client& client = graph_.clients[id];
    client.connectedProcessId = number<std::int32_t>(info.props, PW_KEY_SEC_PID);
    client.throughPulse = text(info.props, PW_KEY_CLIENT_API) == "pipewire-pulse";
    client.processId = client.throughPulse ? number<std::int32_t>(info.props, PW_KEY_APP_PROCESS_ID)
                                           : client.connectedProcessId;
    client.applicationIds.reset();
    client.name = text(info.props, PW_KEY_APP_NAME);
    client.claimedId = text(info.props, PW_KEY_APP_ID);
    client.portalApplication = text(info.props, "pipewire.access.portal.app_id");
    client.described = true;
    events_.changed();
}

void Connection::onDeviceInfo(GlobalId id, const pw_device_info& info) {
    Device& device = graph_.devices[id];
    device.described = true;
    if ((info.change_mask & PW_DEVICE_CHANGE_MASK_PARAMS) != 0) {
        device.hasRoutes = isReadable({info.params, info.n_params}, SPA_PARAM_Route);
        if (device.hasRoutes) {
            askVolume(id);
        }
    }
    events_.changed();
}

void Connection::askVolume(GlobalId id) {
    // Subscriptions miss changes of objects that other clients implement, such as sound cards. The query
    // follows at once: if a client queries and disconnects before the reply, a PipeWire 0.3.65 server takes
    // its outdated reply for the current one, unless another client queries too. The later repetition covers
    // changes that the first query missed.
    enumerateVolume(id);
    toAskAgain_.request(id);
}

void Connection::askAgain(GlobalId id) {
    if (id == metadata_ && !ending_) {
        // The interval limits this when many clients come and go: each binding costs the server and all its
        // clients time.
        const auto now = std::chrono::steady_clock::now();
        if (now < metadataBound_ + metadataInterval) {
            toAskAgain_.request(id);
            return;
        }
        metadataBound_ = now;
        listenToMetadata(id);
    } else {
        enumerateVolume(id);
    }
}

void Connection::enumerateVolume(GlobalId id) {
    if (ending_) {
        return;
    }
    if (graph_.nodes.count(id) > 0) {
        pw_node_enum_params(bound_.at(id)->as<pw_node>(), ++question_, SPA_PARAM_Props, 0, all, nullptr);
    } else if (graph_.devices.count(id) > 0) {
        pw_device_enum_params(bound_.at(id)->as<pw_device>(), ++question_, SPA_PARAM_Route, 0, all, nullptr);
    }
}

void Connection::onParam(GlobalId id, std::uint32_t param, const spa_pod* pod) {
    const auto node = graph_.nodes.find(id);
    const auto device = graph_.devices.find(id);
    if (param == SPA_PARAM_Props && node != graph_.nodes.end()) {
        const VolumeProps volume = volumeProps(pod);
        if (!volume.channels.empty()) {
            node->second.volume.channels = volume.channels;
        }
        if (volume.muted) {
            node->second.volume.muted = volume.muted;
        }
        events_.changed();
    } else if (param == SPA_PARAM_Route && device != graph_.devices.end()) {
        if (auto route = outputRoute(pod)) {
            const int profileDevice = route->profileDevice;
            device->second.routes[profileDevice] = std::move(*route);
            events_.changed();
        }
    }
}

void Connection::onMetadata(const char* key, const char* value) {
    if (key == nullptr || std::string_view(key) == "default.audio.sink") {
        graph_.defaultSink = value != nullptr ? nodeName(value) : std::string();
        events_.changed();
    }
}

}  // namespace sordin::pipewire
