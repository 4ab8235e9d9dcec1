// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/pipewire/session.h"
#include "platform/linux/server/server_audio_objects.h"

#include <chrono>
#include <map>
#include <memory>
#include <utility>

namespace sordin::pipewire {

/// PipeWire's sinks and players as audio objects.
///
/// A sink counts as there when its volume is known and the session manager has had the time to bring back the
/// volume that it remembers, so that nobody reads or writes a volume that is about to be overwritten.
class PipeWireAudioObjects final : public ServerAudioObjects<Session>, private Session::Observer {
public:
    /// Must not be null.
    explicit PipeWireAudioObjects(std::shared_ptr<Session> session);
    ~PipeWireAudioObjects() override;
    PipeWireAudioObjects(const PipeWireAudioObjects&) = delete;
    PipeWireAudioObjects& operator=(const PipeWireAudioObjects&) = delete;

private:
    using Clock = AudioObjectTable::Clock;
    using CardNode = std::pair<GlobalId, int>;  // a card, and which of its nodes

    /// How far a sink's settling is.
    struct Arrival {
        Clock::time_point seen;
        bool settled = false;
    };

    // On the loop, under its lock.
    void disconnecting() override;
    void graphChanged() override;
    void updateArrivals(const Graph& graph);
    /// What is to be known of a sink; nothing while it is arriving.
    [[nodiscard]] std::optional<AudioObjectTable::Sink> sink(const Graph& graph, GlobalId id,
                                                             const Node& node);
    [[nodiscard]] bool settled(Arrival& arrival) const;

    // Under the loop's lock.
    void write(GlobalId sink, const VolumeProps& volume) const;

    std::map<GlobalId, Arrival> arrivals_;           // of all sinks there are
    std::map<GlobalId, CardNode> routes_;            // where a sink's volume is written, if not to its node
    std::optional<Clock::time_point> defaultKnown_;  // since when there has been a default sink
    std::uint32_t sessionManagerStarts_ = 0;         // as counted by the connection
    Clock::time_point sessionManagerSince_{};        // the last of these
    bool listed_ = false;                            // the sinks of the connection's beginning have been seen
};

}  // namespace sordin::pipewire
