// SPDX-License-Identifier: MIT
#pragma once

#include "platform/audio_objects.h"

#include <functional>
#include <map>
#include <set>
#include <utility>

namespace sordin {

/// An audio system in memory. The test adds devices and lets them leave and return. A returning device
/// applies the values that were written while it was away.
class FakeAudioObjects final : public AudioObjects {
public:
    struct Device {
        std::string name;
        std::map<std::uint32_t, float> volumes{{0, 1.0F}};  // by element
        std::set<std::uint32_t> fixed;                      // elements that cannot be set
        std::optional<std::uint32_t> mute = std::nullopt;
        bool present = true;
        bool readable = true;
        bool writable = true;
        std::map<std::uint32_t, float> kept = {};  // written while away
    };
    struct Process {
        std::optional<std::uint32_t> running;
        std::optional<std::int32_t> processId;
    };

    std::map<AudioObjectId, Device> devices;
    std::vector<std::pair<AudioObjectId, Process>> processes;
    bool tellsProcesses = true;
    bool answers = true;  // false: the system hangs
    AudioObjectId defaultDevice = 0;
    std::function<void(AudioObjectId, std::uint32_t, float)> onVolumeWritten = [](auto...) {};
    std::function<void()> onFlush = [] {};

    void leave(AudioObjectId device) {
        devices.at(device).present = false;
        if (defaultDevice == device) {
            defaultDevice = 0;
        }
        changed();
    }

    void comeBack(AudioObjectId device) {
        Device& back = devices.at(device);
        back.present = true;
        for (const auto& [element, volume] : std::exchange(back.kept, {})) {
            back.volumes[element] = volume;
        }
        changed();
    }

    void makeDefault(AudioObjectId device) {
        defaultDevice = device;
        changed();
    }

    [[nodiscard]] std::optional<AudioPropertyValue> get(AudioObjectId object,
                                                        const AudioProperty& property) const override {
        if (object == systemAudioObject) {
            if (property == audio_property::defaultOutputDevice) {
                return defaultDevice;
            }
            return property == audio_property::processList && tellsProcesses ? listProcesses() : std::nullopt;
        }
        for (const auto& [id, process] : processes) {
            if (id == object) {
                return property == audio_property::isRunningOutput ? wrapped(process.running)
                                                                   : wrapped(process.processId);
            }
        }
        const auto device = devices.find(object);
        if (device == devices.end() || !device->second.present || !device->second.readable) {
            return std::nullopt;
        }
        return property == audio_property::mute ? wrapped(device->second.mute)
                                                : wrapped(find(device->second.volumes, property.element));
    }

    bool set(AudioObjectId object, const AudioProperty& property, const AudioPropertyValue& value) override {
        Device& device = devices.at(object);
        if (property == audio_property::mute) {
            device.mute = std::get<std::uint32_t>(value);
            return true;
        }
        if (!device.writable) {
            return false;
        }
        const float volume = std::get<float>(value);
        (device.present ? device.volumes : device.kept)[property.element] = volume;
        onVolumeWritten(object, property.element, volume);
        return true;
    }

    [[nodiscard]] bool has(AudioObjectId object, const AudioProperty& property) const override {
        const Device& device = devices.at(object);
        return property == audio_property::mute ? device.mute.has_value()
                                                : device.volumes.count(property.element) > 0;
    }

    [[nodiscard]] bool settable(AudioObjectId object, const AudioProperty& property) const override {
        return property == audio_property::mute || devices.at(object).fixed.count(property.element) == 0;
    }

    bool flush(std::chrono::milliseconds /*deadline*/) override {
        onFlush();
        return answers;
    }

    [[nodiscard]] std::optional<OutputDeviceRecord> record(AudioObjectId device) const override {
        return OutputDeviceRecord{devices.at(device).name, "", 1, {1, 0.5F}};
    }

    AudioObjectId adopt(const OutputDeviceRecord& record) override {
        for (const auto& [id, device] : devices) {
            if (device.name == record.name) {
                return id;
            }
        }
        constexpr AudioObjectId adopted = 1'000;
        devices[adopted] = {record.name, {{0, 1.0F}}, {}, std::nullopt, false};
        return adopted;
    }

    [[nodiscard]] bool present(AudioObjectId device) const override { return devices.at(device).present; }

    void onDevicesChanged(std::function<void()> handler) override { handler_ = std::move(handler); }

private:
    template <class Value>
    static std::optional<AudioPropertyValue> wrapped(const std::optional<Value>& value) {
        return value ? std::optional<AudioPropertyValue>(*value) : std::nullopt;
    }

    static std::optional<float> find(const std::map<std::uint32_t, float>& volumes, std::uint32_t element) {
        const auto found = volumes.find(element);
        return found == volumes.end() ? std::nullopt : std::optional(found->second);
    }

    [[nodiscard]] std::optional<AudioPropertyValue> listProcesses() const {
        std::vector<AudioObjectId> ids;
        for (const auto& process : processes) {
            ids.push_back(process.first);
        }
        return ids;
    }

    void changed() const {
        if (handler_) {
            handler_();
        }
    }

    std::function<void()> handler_;
};

}  // namespace sordin
