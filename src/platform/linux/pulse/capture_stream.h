// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/pulse/session.h"
#include "platform/linux/pulse/stream_mixer.h"
#include "platform/linux/server/flow_watch.h"
#include "platform/linux/server/planned_set.h"
#include "platform/loopback_source.h"

#include <span>
#include <string>
#include <utility>

namespace sordin::pulse {

/// A recording of each application that plays, taken before the volume of the device that it plays to, and
/// added up here: the monitor of a device would be silent while that is faded.
///
/// Lives on the loop, under its lock, for as long as a connection at most; must not be destroyed by one of
/// its own events.
class CaptureStream {
public:
    /// Both must outlive the stream; the session is connected.
    CaptureStream(Session& session, const LoopbackSource::Handlers& handlers);
    ~CaptureStream();
    CaptureStream(const CaptureStream&) = delete;
    CaptureStream& operator=(const CaptureStream&) = delete;

    /// Connects to what there is to hear now.
    void update();

    /// Nothing to do: its recordings go on, as they must for the next time.
    void setWanted(bool /*wanted*/) {}

private:
    class Tap;
    /// A player, and the monitor of the sink that it plays to: a player that moves needs another tap.
    using Place = std::pair<Index, Index>;

    void updateTaps();
    void watchFlow();
    void hear(Index player, std::span<const float> samples);
    void deliver();
    void end(const std::string& reason);

    Session& session_;
    const LoopbackSource::Handlers& handlers_;
    StreamMixer mixer_;
    PlannedSet<Place, Tap> taps_;
    FlowWatch flow_;
    bool ended_ = false;
};

}  // namespace sordin::pulse
