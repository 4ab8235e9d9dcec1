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

/// One connection to the server, from connecting to its loss. Lives on the loop, under its lock; must not be
/// destroyed by one of its own events.
class Connection {
public:
    struct Events {
        std::function<void()> changed;          ///< the graph has changed
        std::function<void()> lost;             ///< once: the server is gone
        std::function<void(int)> synchronised;  ///< the server has done all that came before a synchronise()
    };

    /// Nothing while no server answers.
    [[nodiscard]] static std::unique_ptr<Connection> open(pw_context* context, Events events);

    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    [[nodiscard]] const Graph& graph() const { return graph_; }

    /// See Graph.
    void leaveOut(const LeftOut& what) { graph_.leaveOut(what); }

    [[nodiscard]] pw_core* core() const { return core_.get(); }

    /// Asks the server to answer; the number that `synchronised` will tell.
    int synchronise();

    /// Asks nothing more by itself. The answers to what was asked come before the next synchronised(), which
    /// is to be awaited: a server (0.3.65) may take the end of a client that waits for an answer for the
    /// answer.
    void prepareEnd() { ending_ = true; }

    /// Write the volume of a node, or of the route of a card, if there is such.
    void setNodeVolume(GlobalId node, const VolumeProps& volume);
    void setRouteVolume(GlobalId device, int profileDevice, const VolumeProps& volume);

private:
    /// A proxy of an object that is listened to.
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
    CorePointer core_;  // destroyed last: the proxies belong to it
    Hook coreHook_;
    Hook ownClientHook_;
    ProxyPointer registry_;
    Hook registryHook_;
    std::map<GlobalId, std::unique_ptr<Bound>> bound_;
    std::optional<GlobalId> metadata_;
    std::chrono::steady_clock::time_point metadataBound_;  // again, last
    Repeats toAskAgain_;  // volumes that have changed, and metadata of which a change may have been missed
    bool ending_ = false;
    int question_ = 0;
};

}  // namespace sordin::pipewire
