// SPDX-License-Identifier: MIT
#include "platform/linux/server/audio_object_table.h"

#include <algorithm>
#include <cmath>

namespace sordin {

namespace {

/// The sink that servers create if there is no device.
constexpr auto dummySink = "auto_null";

}  // namespace

AudioObjectTable::AudioObjectTable(Write write, Clock::duration rememberingTime)
    : write_(std::move(write)), rememberingTime_(rememberingTime) {}

bool AudioObjectTable::update(const State& state) {
    defaultSink_ = state.defaultSink;
    updateDevices(state.sinks);
    updateProcesses(state.players);
    std::vector<AudioObjectId> now{defaultDevice()};
    for (const auto& [id, device] : devices_) {
        if (device.sink) {
            now.push_back(id);
        }
    }
    return std::exchange(told_, now) != now;
}

std::optional<AudioPropertyValue> AudioObjectTable::get(AudioObjectId object,
                                                        const AudioProperty& property) const {
    if (object == systemAudioObject && property == audio_property::defaultOutputDevice) {
        return defaultDevice();
    }
    if (object == systemAudioObject && property == audio_property::processList) {
        std::vector<AudioObjectId> ids;
        for (const auto& process : processes_) {
            ids.push_back(process.second.id);
        }
        std::sort(ids.begin(), ids.end());  // in order of appearance
        return ids;
    }
    if (const OutputDevice* device = find(object)) {
        if (device->sink && property == audio_property::volume(0) && device->hasVolume) {
            return device->volume.scalar();
        }
        if (device->sink && property == audio_property::mute && device->muted) {
            return std::uint32_t{*device->muted ? 1U : 0U};
        }
        return std::nullopt;
    }
    return processProperty(object, property);
}

bool AudioObjectTable::set(AudioObjectId object, const AudioProperty& property,
                           const AudioPropertyValue& value) {
    const auto found = devices_.find(object);
    if (found == devices_.end()) {
        return false;
    }
    OutputDevice& device = found->second;
    const auto* volume = std::get_if<float>(&value);
    const auto* mute = std::get_if<std::uint32_t>(&value);
    if (property == audio_property::volume(0) && volume != nullptr && device.hasVolume &&
        std::isfinite(*volume)) {
        const auto channels = device.volume.write(std::clamp(*volume, 0.0F, 1.0F));
        device.lastWrite = Clock::now();
        write(device, {channels, std::nullopt});  // or when the device appears
        return true;
    }
    if (property == audio_property::mute && mute != nullptr && device.muted) {
        device.muted = *mute != 0;
        if (device.sink) {
            write(device, {{}, device.muted});
        } else {
            device.keptMute = device.muted;
        }
        return true;
    }
    return false;
}

bool AudioObjectTable::has(AudioObjectId object, const AudioProperty& property) const {
    const OutputDevice* device = find(object);
    return device != nullptr && ((property == audio_property::volume(0) && device->hasVolume) ||
                                 (property == audio_property::mute && device->muted));
}

std::optional<OutputDeviceRecord> AudioObjectTable::record(AudioObjectId device) const {
    const OutputDevice* known = find(device);
    if (known == nullptr) {
        return std::nullopt;
    }
    return OutputDeviceRecord{known->name.first, known->name.second, known->volume.reference(),
                              known->volume.ratios()};
}

AudioObjectId AudioObjectTable::adopt(const OutputDeviceRecord& record) {
    const AudioObjectId id = idOf({record.name, record.route});
    devices_.at(id).volume.adopt(record.reference, record.ratios);
    return id;
}

bool AudioObjectTable::present(AudioObjectId device) const {
    const OutputDevice* known = find(device);
    return known != nullptr && known->sink;
}

void AudioObjectTable::updateDevices(const std::vector<Sink>& sinks) {
    std::map<AudioObjectId, const Sink*> there;
    for (const Sink& sink : sinks) {
        there.emplace(idOf({sink.name, sink.route}), &sink);
    }
    for (auto& [id, device] : devices_) {
        const auto found = there.find(id);
        if (found == there.end()) {
            leave(device);
        } else if (const bool volumeCame = !device.hasVolume && !found->second->volume.channels.empty();
                   volumeCame || device.sink != found->second->id) {
            appear(device, *found->second);
        } else {
            device.volume.reported(found->second->volume.channels);
            device.muted = found->second->volume.muted;
        }
    }
}

void AudioObjectTable::updateProcesses(const std::map<std::int32_t, bool>& players) {
    std::map<std::int32_t, Process> there;
    for (const auto& [processId, running] : players) {
        const auto known = processes_.find(processId);
        there[processId] = {known != processes_.end() ? known->second.id : ++lastId_, running};
    }
    processes_ = std::move(there);
}

void AudioObjectTable::appear(OutputDevice& device, const Sink& sink) {
    device.sink = sink.id;
    device.hasVolume = !sink.volume.channels.empty();
    device.muted = sink.volume.muted;
    if (device.hasVolume) {
        if (const auto again = device.volume.appeared(sink.volume.channels); !again.empty()) {
            write(device, {again, std::nullopt});
        }
    }
    if (const auto kept = std::exchange(device.keptMute, std::nullopt); kept && device.muted) {
        device.muted = kept;
        write(device, {{}, kept});
    }
}

void AudioObjectTable::leave(OutputDevice& device) const {
    if (device.sink && Clock::now() > device.lastWrite + rememberingTime_) {
        device.volume.writeRemembered();
    }
    device.sink.reset();
}

AudioObjectId AudioObjectTable::idOf(const Name& name) {
    for (const auto& [id, device] : devices_) {
        if (device.name == name) {
            return id;
        }
    }
    devices_[++lastId_].name = name;
    return lastId_;
}

const AudioObjectTable::OutputDevice* AudioObjectTable::find(AudioObjectId id) const {
    const auto found = devices_.find(id);
    return found != devices_.end() ? &found->second : nullptr;
}

AudioObjectId AudioObjectTable::defaultDevice() const {
    for (const auto& [id, device] : devices_) {
        if (device.sink && device.name.first == defaultSink_ && defaultSink_ != dummySink) {
            return id;
        }
    }
    return 0;
}

std::optional<AudioPropertyValue> AudioObjectTable::processProperty(AudioObjectId id,
                                                                    const AudioProperty& property) const {
    const auto process = std::find_if(processes_.begin(), processes_.end(),
                                      [id](const auto& entry) { return entry.second.id == id; });
    if (process == processes_.end()) {
        return std::nullopt;
    }
    if (property == audio_property::processId) {
        return process->first;
    }
    if (property == audio_property::isRunningOutput) {
        return std::uint32_t{process->second.running ? 1U : 0U};
    }
    return std::nullopt;
}

void AudioObjectTable::write(const OutputDevice& device, const VolumeProps& volume) const {
    if (device.sink) {
        write_(*device.sink, volume);
    }
}

}  // namespace sordin
