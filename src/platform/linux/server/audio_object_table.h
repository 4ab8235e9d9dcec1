// SPDX-License-Identifier: MIT
#pragma once

#include "platform/audio_objects.h"
#include "platform/linux/server/device_volume.h"
#include "platform/linux/server/volume_props.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace sordin {

/// A sound server's sinks and players as audio objects: the code that all servers share. A device is a sink
/// name combined with the active connector, because headphones and speakers have separate volumes. A process
/// object is a process with players. The operations are those of AudioObjects, but call them from one thread
/// at a time.
class AudioObjectTable {
public:
    using Clock = std::chrono::steady_clock;
    /// Writes the given parts of a volume to a sink.
    using Write = std::function<void(std::uint32_t sink, const VolumeProps& volume)>;

    struct Sink {
        std::uint32_t id = 0;  ///< the server's identifier
        std::string name;
        std::string route{};  ///< its connector; empty if it has none
        VolumeProps volume{};
    };

    /// The complete state of a server.
    struct State {
        std::vector<Sink> sinks;
        std::string defaultSink;  ///< its name; empty if there is none
        /// Processes that play or can play, with whether they play now.
        std::map<std::int32_t, bool> players;
    };

    /// `rememberingTime` is how long the server may need to store a volume, which it restores when the sink
    /// returns.
    AudioObjectTable(Write write, Clock::duration rememberingTime);

    /// Applies a new state of the server. Returns whether the default device or the set of devices changed.
    [[nodiscard]] bool update(const State& state);
    /// The connection to the server ended. Returns the same as update().
    [[nodiscard]] bool clear() { return update({}); }

    [[nodiscard]] std::optional<AudioPropertyValue> get(AudioObjectId object,
                                                        const AudioProperty& property) const;
    bool set(AudioObjectId object, const AudioProperty& property, const AudioPropertyValue& value);
    [[nodiscard]] bool has(AudioObjectId object, const AudioProperty& property) const;
    [[nodiscard]] std::optional<OutputDeviceRecord> record(AudioObjectId device) const;
    AudioObjectId adopt(const OutputDeviceRecord& record);
    [[nodiscard]] bool present(AudioObjectId device) const;

private:
    using Name = std::pair<std::string, std::string>;  // of the sink and the route

    struct OutputDevice {
        Name name;
        DeviceVolume volume;
        bool hasVolume = true;  // assumed for a device that was never seen
        std::optional<bool> muted;
        std::optional<std::uint32_t> sink;  // while it is present
        std::optional<bool> keptMute;       // written while it was absent
        Clock::time_point lastWrite;
    };
    struct Process {
        AudioObjectId id;
        bool running;
    };

    void updateDevices(const std::vector<Sink>& sinks);
    void updateProcesses(const std::map<std::int32_t, bool>& players);
    void appear(OutputDevice& device, const Sink& sink);
    void leave(OutputDevice& device) const;
    [[nodiscard]] AudioObjectId idOf(const Name& name);
    [[nodiscard]] const OutputDevice* find(AudioObjectId id) const;
    [[nodiscard]] AudioObjectId defaultDevice() const;
    [[nodiscard]] std::optional<AudioPropertyValue> processProperty(AudioObjectId id,
                                                                    const AudioProperty& property) const;
    void write(const OutputDevice& device, const VolumeProps& volume) const;

    const Write write_;
    const Clock::duration rememberingTime_;
    AudioObjectId lastId_ = systemAudioObject;
    std::map<AudioObjectId, OutputDevice> devices_;
    std::map<std::int32_t, Process> processes_;  // by process identifier
    std::string defaultSink_;
    std::vector<AudioObjectId> told_;  // the default device and the present devices after the last update()
};

}  // namespace sordin
