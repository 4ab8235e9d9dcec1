// SPDX-License-Identifier: MIT
#pragma once

#include "platform/audio_objects.h"
#include "platform/linux/pipewire/device_volume.h"
#include "platform/linux/pipewire/session.h"

#include <chrono>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace sordin::pipewire {

/// PipeWire's sinks and players as audio objects. A device is a sink by its node's name together with the
/// route in use, since headphones and speakers have volumes of their own; a process is one that has players.
///
/// A sink counts as there when its volume is known and the session manager has had the time to bring back the
/// volume that it remembers, so that nobody reads or writes a volume that is about to be overwritten.
class PipeWireAudioObjects final : public AudioObjects, private Session::Observer {
public:
    /// Must not be null.
    explicit PipeWireAudioObjects(std::shared_ptr<Session> session);
    ~PipeWireAudioObjects() override;
    PipeWireAudioObjects(const PipeWireAudioObjects&) = delete;
    PipeWireAudioObjects& operator=(const PipeWireAudioObjects&) = delete;

    [[nodiscard]] std::optional<AudioPropertyValue> get(AudioObjectId object,
                                                        const AudioProperty& property) const override;
    bool set(AudioObjectId object, const AudioProperty& property, const AudioPropertyValue& value) override;
    [[nodiscard]] bool has(AudioObjectId object, const AudioProperty& property) const override;
    [[nodiscard]] bool settable(AudioObjectId object, const AudioProperty& property) const override;
    bool flush(std::chrono::milliseconds deadline) override;
    [[nodiscard]] std::optional<OutputDeviceRecord> record(AudioObjectId device) const override;
    AudioObjectId adopt(const OutputDeviceRecord& record) override;
    [[nodiscard]] bool present(AudioObjectId device) const override;
    void onDevicesChanged(std::function<void()> handler) override;

private:
    using Clock = std::chrono::steady_clock;
    using Name = std::pair<std::string, std::string>;  // the node's and the route's

    /// Where a device's volume is written.
    struct Target {
        GlobalId node = 0;
        std::optional<std::pair<GlobalId, int>> route{};  // the card and which of its nodes
    };
    struct OutputDevice {
        Name name;
        DeviceVolume volume;
        bool hasVolume = true;  // of one never seen that is all that is known
        std::optional<bool> muted;
        std::optional<Target> target;  // while it is there
        std::optional<bool> keptMute;  // written while it was away
        Clock::time_point lastWrite;
    };
    struct Sink {
        std::string route;
        Target target;
        VolumeProps volume;
    };

    /// How far a sink's settling is.
    struct Arrival {
        Clock::time_point seen;
        bool settled = false;
    };

    // On the loop, under its lock.
    void disconnecting() override;
    void graphChanged() override;
    void updateDevices(const Graph& graph);
    void updateProcesses(const Graph& graph);
    /// What is to be known of a sink; nothing while it is arriving.
    [[nodiscard]] std::optional<Sink> sink(const Graph& graph, GlobalId id, const Node& node);
    [[nodiscard]] bool settled(Arrival& arrival) const;
    void appear(OutputDevice& device, const Sink& sink);
    static void leave(OutputDevice& device);
    void tellChanges();

    // Under the loop's lock.
    [[nodiscard]] AudioObjectId idOf(const Name& name);
    [[nodiscard]] const OutputDevice* find(AudioObjectId id) const;
    [[nodiscard]] AudioObjectId defaultDevice() const;
    [[nodiscard]] std::optional<AudioPropertyValue> processProperty(AudioObjectId id,
                                                                    const AudioProperty& property) const;
    void write(const OutputDevice& device, const VolumeProps& volume) const;

    const std::shared_ptr<Session> session_;
    AudioObjectId lastId_ = systemAudioObject;
    std::map<AudioObjectId, OutputDevice> devices_;
    std::map<std::int32_t, AudioObjectId> processes_;  // by process identifier
    std::map<GlobalId, Arrival> arrivals_;             // of all sinks there are
    std::optional<Clock::time_point> defaultKnown_;    // since when there has been a default sink
    std::uint32_t sessionManagerStarts_ = 0;           // as counted by the connection
    Clock::time_point sessionManagerSince_{};          // the last of these
    bool listed_ = false;              // the sinks of the connection's beginning have been seen
    std::vector<AudioObjectId> told_;  // the default device and those there, as last told
    std::function<void()> onDevicesChanged_;
};

}  // namespace sordin::pipewire
