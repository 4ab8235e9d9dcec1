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

/// Records each playing application before its sink's volume is applied, and mixes the recordings. The
/// monitor of a sink is no alternative: it becomes silent when the sink is faded.
///
/// Use it on the loop's thread, under its lock, and only while the session is connected. It must not be
/// destroyed in one of its own events.
class CaptureStream {
public:
    /// Both must outlive the stream. The session must be connected.
    CaptureStream(Session& session, const LoopbackSource::Handlers& handlers);
    ~CaptureStream();
    CaptureStream(const CaptureStream&) = delete;
    CaptureStream& operator=(const CaptureStream&) = delete;

    /// Records the applications that play now, and checks that sound arrives.
    void update();

    /// Does nothing: the recordings have to continue until the audio is wanted again.
    void setWanted(bool /*wanted*/) {}

private:
    class Tap;
    /// A player and the monitor of its sink. A player that moves to another sink needs another tap.
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
