// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/pipewire/graph.h"
#include "platform/linux/pipewire/handles.h"
#include "platform/linux/pipewire/repeats.h"

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <pipewire/extensions/metadata.h>

namespace sordin::pipewire {

/// One connection to the server, until it is lost. Use it on the loop's thread, under its lock. It must not
/// be destroyed in one of its own events.
class Connection {
public:
    struct Events {
        std::function<void()> changed;  ///< the graph changed
        std::function<void()> lost;     ///< the connection was lost; called once
        /// The server has processed everything before the synchronise() with this number.
        std::function<void(int)> synchronised;
    };

    /// Returns null if no server responds.
    [[nodiscard]] static std::unique_ptr<Connection> open(pw_context* context, Events events);

    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    [[nodiscard]] const Graph& graph() const { return graph_; }

    /// See Graph::leaveOut().
    void leaveOut(const LeftOut& what) { graph_.leaveOut(what); }

    [[nodiscard]] pw_core* core() const { return core_.get(); }

    /// Requests a reply from the server; returns the number that `synchronised` will report.
    int synchronise();

    /// Stops all queries that the connection makes by itself, before it closes. Replies to earlier queries
    /// arrive before the next `synchronised`. Wait for it before you destroy the connection: a PipeWire
    /// 0.3.65 server may take the end of a waiting client for the reply.
    void prepareEnd() { ending_ = true; }

    /// Set the volume of a node or of a card's route. Ignored if it does not exist.
    void setNodeVolume(GlobalId node, const VolumeProps& volume);
    void setRouteVolume(GlobalId device, int profileDevice, const VolumeProps& volume);

private:
    /// The proxy and listener of an object.
    struct Bound;

    Connection(pw_context* context, CorePointer core, Events events);
    void startListening();
    Bound* bind(GlobalId id, const char* type, std::uint32_t version);
    void onGlobal(GlobalId id, const char* type, const spa_dict* properties);
    void addNode(GlobalId id, const spa_dict* properties);
    void addClient(GlobalId id);
    void addDevice(GlobalId id);
    void addMetadata(GlobalId id);
    void onGlobalRemoved(GlobalId id);
    void onNodeInfo(GlobalId id, const pw_node_info& info);
    void onClientInfo(GlobalId id, const pw_client_info& info);
    void onDeviceInfo(GlobalId id, const pw_device_info& info);
    bool listenToMetadata(GlobalId id);
    void askVolume(GlobalId id);
    void askAgain(GlobalId id);
    void enumerateVolume(GlobalId id);
    void onParam(GlobalId id, std::uint32_t param, const spa_pod* pod);
    void onMetadata(const char* key, const char* value);

    Events events_;
    Graph graph_;
    CorePointer core_;  // destroyed last, because the proxies belong to it
    Hook coreHook_;
    Hook ownClientHook_;
    ProxyPointer registry_;
    Hook registryHook_;
    std::map<GlobalId, std::unique_ptr<Bound>> bound_;
    std::optional<GlobalId> metadata_;
    std::chrono::steady_clock::time_point metadataBound_;  // when listenToMetadata() last ran again
    Repeats toAskAgain_;  // for changed volumes, and for metadata of which a change may have been missed
    bool ending_ = false;
    int question_ = 0;
};

}  // namespace sordin::pipewire
