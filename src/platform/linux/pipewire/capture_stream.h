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

/// An input node of the program's own, linked to every application that plays: it hears them at full level,
/// whatever the volume of the device that they play to. While none of them plays the node is inactive, so
/// that the server and the device may sleep.
///
/// The node has its own connection. The server reads nothing more from a client that the session manager has
/// yet to answer, be it for a card's volume or the metadata, and nothing more from a session manager that a
/// node has yet to answer. If both waits met in one client of ours, neither would end, and all sound with
/// them.
///
/// Lives on the loop, under its lock, for as long as the session's connection at most; must not be destroyed
/// by one of its own events.
class CaptureStream {
public:
    /// Both must outlive the stream; the session has a connection.
    CaptureStream(Session& session, const LoopbackSource::Handlers& handlers);
    ~CaptureStream();
    CaptureStream(const CaptureStream&) = delete;
    CaptureStream& operator=(const CaptureStream&) = delete;

    /// Connects to what there is to hear now.
    void update();

    /// Whether it may be active.
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
    // On the server's data thread, which must not wait.
    void onProcess();
    void hear(const spa_data& data);

    Session& session_;
    const LoopbackSource::Handlers& handlers_;
    SampleRing heard_;                         // from the data thread to the loop
    LoopEvent enoughHeard_;                    // for the handler to be called
    std::atomic<std::uint32_t> channels_ = 2;  // as agreed with the server
    CorePointer core_;                         // the node's connection
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
