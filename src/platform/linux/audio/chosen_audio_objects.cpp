// SPDX-License-Identifier: MIT
#include "platform/linux/audio/chosen_audio_objects.h"

#include <utility>

namespace sordin {

namespace {

/// Marks the identifiers of PulseAudio's objects. Neither server reaches this many objects.
constexpr AudioObjectId pulseBit = 0x8000'0000;

AudioObjectId theirs(AudioObjectId object) {
    return object & ~pulseBit;
}

AudioObjectId ours(AudioObjectId object, ServerChoice::Server server) {
    return object != 0 && server == ServerChoice::Server::pulseAudio ? object | pulseBit : object;
}

}  // namespace

ChosenAudioObjects::ChosenAudioObjects(std::shared_ptr<ServerChoice> choice,
                                       std::shared_ptr<AudioObjects> pipeWire,
                                       std::shared_ptr<AudioObjects> pulse)
    : choice_(std::move(choice)), pipeWire_(std::move(pipeWire)), pulse_(std::move(pulse)) {}

std::optional<AudioPropertyValue> ChosenAudioObjects::get(AudioObjectId object,
                                                          const AudioProperty& property) const {
    const Server server = serverOf(object);
    auto value = objectsOf(server).get(theirs(object), property);
    if (value && property == audio_property::defaultOutputDevice) {
        auto& device = std::get<std::uint32_t>(*value);
        device = ours(device, server);
    } else if (value && property == audio_property::processList) {
        for (AudioObjectId& process : std::get<std::vector<AudioObjectId>>(*value)) {
            process = ours(process, server);
        }
    }
    return value;
}

bool ChosenAudioObjects::set(AudioObjectId object, const AudioProperty& property,
                             const AudioPropertyValue& value) {
    return objectsOf(serverOf(object)).set(theirs(object), property, value);
}

bool ChosenAudioObjects::has(AudioObjectId object, const AudioProperty& property) const {
    return objectsOf(serverOf(object)).has(theirs(object), property);
}

bool ChosenAudioObjects::settable(AudioObjectId object, const AudioProperty& property) const {
    return objectsOf(serverOf(object)).settable(theirs(object), property);
}

bool ChosenAudioObjects::flush(std::chrono::milliseconds deadline) {
    return objectsOf(choice_->server()).flush(deadline);
}

std::optional<OutputDeviceRecord> ChosenAudioObjects::record(AudioObjectId device) const {
    return objectsOf(serverOf(device)).record(theirs(device));
}

AudioObjectId ChosenAudioObjects::adopt(const OutputDeviceRecord& record) {
    const Server server = choice_->server();
    return ours(objectsOf(server).adopt(record), server);
}

bool ChosenAudioObjects::present(AudioObjectId device) const {
    return objectsOf(serverOf(device)).present(theirs(device));
}

void ChosenAudioObjects::onDevicesChanged(std::function<void()> handler) {
    pipeWire_->onDevicesChanged(handler);
    pulse_->onDevicesChanged(std::move(handler));
}

AudioObjects& ChosenAudioObjects::objectsOf(Server server) const {
    return server == Server::pulseAudio ? *pulse_ : *pipeWire_;
}

ChosenAudioObjects::Server ChosenAudioObjects::serverOf(AudioObjectId object) const {
    if (object == systemAudioObject) {
        return choice_->server();
    }
    return (object & pulseBit) != 0 ? Server::pulseAudio : Server::pipeWire;
}

}  // namespace sordin
