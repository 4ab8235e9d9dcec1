// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/pipewire/handles.h"
#include "platform/linux/pipewire/link_plan.h"
#include "platform/linux/pipewire/sample_ring.h"
#include "platform/linux/pipewire/session.h"
#include "platform/linux/server/flow_watch.h"
#include "platform/linux/server/planned_set.h"
#include "platform/loopback_source.h"

#include <atomic>
#include <cstdint>

namespace sordin::pipewire {

/// An input node of this program, linked to every application that plays. It records them at full level,
/// regardless of the volume of their sink. While none of them plays, the node is inactive, so that the server
/// and the sink can suspend.
///
/// The node has its own connection, which avoids a deadlock. While a client waits for a reply of the session
/// manager (for a card's volume or the metadata), the server reads nothing more from the client. While the
/// session manager waits for a reply of a node, the server reads nothing more from the session manager. If
/// the same client caused both waits, neither would end, and all sound would stop.
///
/// Use it on the loop's thread, under its lock, and only while the session has a connection. It must not be
/// destroyed in one of its own events.
class CaptureStream {
public:
    /// Both must outlive the stream. The session must have a connection.
    CaptureStream(Session& session, const LoopbackSource::Handlers& handlers);
    ~CaptureStream();
    CaptureStream(const CaptureStream&) = delete;
    CaptureStream& operator=(const CaptureStream&) = delete;

    /// Links the node to the applications that play now, and checks that sound arrives.
    void update();

    /// See LoopbackSource.
    void setWanted(bool wanted);

private:
    class Link;

    void connect();
    void updateLinks(const Graph& graph, GlobalId self);
    void updateActivity(const Graph& graph);
    void watchFlow();
    void onState(pw_stream_state state, const char* error);
    void onFormat(const spa_pod* format);
    void deliver();
    void end(const std::string& reason);
    // On the server's data thread, which must not block:
    void onProcess();
    void hear(const spa_data& data);

    Session& session_;
    const LoopbackSource::Handlers& handlers_;
    SampleRing heard_;                         // passes samples from the data thread to the loop
    LoopEvent enoughHeard_;                    // schedules deliver() on the loop
    std::atomic<std::uint32_t> channels_ = 2;  // as negotiated with the server
    CorePointer core_;                         // the connection of the node
    StreamPointer stream_;
    Hook hook_;
    bool opened_ = false;
    bool wanted_ = true;
    bool ended_ = false;

    PlannedSet<PortPair, Link> links_;
    std::uint32_t sessionManagerStarts_ = 0;
    FlowWatch flow_;
};

}  // namespace sordin::pipewire
