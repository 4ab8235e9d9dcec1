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
/// A sink counts as present when its volume is known and the session manager has had the time to restore its
/// stored volume. Otherwise the program could read or write a volume that is about to be overwritten.
class PipeWireAudioObjects final : public ServerAudioObjects<Session>, private Session::Observer {
public:
    /// `session` must not be null.
    explicit PipeWireAudioObjects(std::shared_ptr<Session> session);
    ~PipeWireAudioObjects() override;
    PipeWireAudioObjects(const PipeWireAudioObjects&) = delete;
    PipeWireAudioObjects& operator=(const PipeWireAudioObjects&) = delete;

private:
    using Clock = AudioObjectTable::Clock;
    using CardNode = std::pair<GlobalId, int>;  // a card and the profile device of the node

    /// When a sink appeared, and whether it is settled.
    struct Arrival {
        Clock::time_point seen;
        bool settled = false;
    };

    // On the loop's thread, under its lock:
    void disconnecting() override;
    void graphChanged() override;
    void updateArrivals(const Graph& graph);
    /// Returns the state of a sink; none until it counts as present.
    [[nodiscard]] std::optional<AudioObjectTable::Sink> sink(const Graph& graph, GlobalId id,
                                                             const Node& node);
    [[nodiscard]] bool settled(Arrival& arrival) const;

    // Under the loop's lock:
    void write(GlobalId sink, const VolumeProps& volume) const;

    std::map<GlobalId, Arrival> arrivals_;           // of all current sinks
    std::map<GlobalId, CardNode> routes_;            // the sinks whose volume is written to a card's route
    std::optional<Clock::time_point> defaultKnown_;  // when a default sink became known
    std::uint32_t sessionManagerStarts_ = 0;         // last value from the graph
    Clock::time_point sessionManagerSince_{};        // when it last changed
    bool listed_ = false;                            // whether graphChanged() has handled the initial sinks
};

}  // namespace sordin::pipewire
