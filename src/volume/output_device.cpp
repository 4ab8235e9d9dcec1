// SPDX-License-Identifier: MIT
#include "volume/output_device.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace sordin {

namespace {

std::vector<std::uint32_t> volumeElements(const AudioObjects& objects, AudioObjectId device) {
    const std::vector<std::vector<std::uint32_t>> candidates{
        {0}, {1, 2}};  // the main element, or the two front channels
    for (const auto& elements : candidates) {
        if (std::all_of(elements.begin(), elements.end(), [&](std::uint32_t element) {
                const auto property = audio_property::volume(element);
                return objects.has(device, property) && objects.settable(device, property);
            })) {
            return elements;
        }
    }
    return {};
}

}  // namespace

std::optional<AudioObjectId> defaultOutputDevice(const AudioObjects& objects) {
    const auto device = read<std::uint32_t>(objects, systemAudioObject, audio_property::defaultOutputDevice);
    return device && *device != 0 ? device : std::nullopt;
}

std::optional<float> outputVolume(const AudioObjects& objects, AudioObjectId device) {
    const auto elements = volumeElements(objects, device);
    float sum = 0;
    for (const std::uint32_t element : elements) {
        const auto value = read<float>(objects, device, audio_property::volume(element));
        if (!value) {
            return std::nullopt;
        }
        sum += *value;
    }
    return elements.empty() ? std::nullopt : std::optional(sum / static_cast<float>(elements.size()));
}

bool setOutputVolume(AudioObjects& objects, AudioObjectId device, float volume) {
    const auto elements = volumeElements(objects, device);
    bool taken = !elements.empty();
    for (const std::uint32_t element : elements) {
        taken = objects.set(device, audio_property::volume(element), std::clamp(volume, 0.0F, 1.0F)) && taken;
    }
    return taken;
}

bool raiseOutputVolume(AudioObjects& objects, AudioObjectId device, float volume) {
    if (objects.present(device) && outputVolume(objects, device).value_or(1) >= volume) {
        return !volumeElements(objects, device).empty();
    }
    return setOutputVolume(objects, device, volume);
}

bool canMute(const AudioObjects& objects, AudioObjectId device) {
    return objects.has(device, audio_property::mute) && objects.settable(device, audio_property::mute) &&
           read<std::uint32_t>(objects, device, audio_property::mute).value_or(0) == 0;
}

void setMuted(AudioObjects& objects, AudioObjectId device, bool muted) {
    objects.set(device, audio_property::mute, std::uint32_t{muted ? 1U : 0U});
}

}  // namespace sordin
