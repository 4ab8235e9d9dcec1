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

/// A sound server's sinks and players as audio objects: what is the same for every server. A device is a sink
/// by its name together with the connector in use, since headphones and speakers have volumes of their own; a
/// process is one that has players. Operations as those of AudioObjects, but for one thread at a time.
class AudioObjectTable {
public:
    using Clock = std::chrono::steady_clock;
    /// Writes what is given of a volume to a sink.
    using Write = std::function<void(std::uint32_t sink, const VolumeProps& volume)>;

    struct Sink {
        std::uint32_t id = 0;  ///< the server's
        std::string name;
        std::string route{};  ///< its connector; empty when it has none
        VolumeProps volume{};
    };

    /// What a server has: all of it.
    struct State {
        std::vector<Sink> sinks;
        std::string defaultSink;               ///< its name; empty while there is none
        std::map<std::int32_t, bool> players;  ///< the processes that play or could; whether they do
    };

    /// `rememberingTime` is how long the server may need to store a volume for the sink's next coming.
    AudioObjectTable(Write write, Clock::duration rememberingTime);

    /// The server has changed. Returns whether its default device or the set of its devices has.
    [[nodiscard]] bool update(const State& state);
    /// The server is gone.
    [[nodiscard]] bool clear() { return update({}); }

    [[nodiscard]] std::optional<AudioPropertyValue> get(AudioObjectId object,
                                                        const AudioProperty& property) const;
    bool set(AudioObjectId object, const AudioProperty& property, const AudioPropertyValue& value);
    [[nodiscard]] bool has(AudioObjectId object, const AudioProperty& property) const;
    [[nodiscard]] std::optional<OutputDeviceRecord> record(AudioObjectId device) const;
    AudioObjectId adopt(const OutputDeviceRecord& record);
    [[nodiscard]] bool present(AudioObjectId device) const;

private:
    using Name = std::pair<std::string, std::string>;  // the sink's and the route's

    struct OutputDevice {
        Name name;
        DeviceVolume volume;
        bool hasVolume = true;  // of one never seen that is all that is known
        std::optional<bool> muted;
        std::optional<std::uint32_t> sink;  // while it is there
        std::optional<bool> keptMute;       // written while it was away
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
    std::vector<AudioObjectId> told_;  // the default device and those there, as last told
};

}  // namespace sordin
