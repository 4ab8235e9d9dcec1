// SPDX-License-Identifier: MIT
// Volume and mute switch of an output device, on top of the properties of audio objects.
#pragma once

#include "platform/audio_objects.h"

#include <optional>

namespace sordin {

/// The default output device; nothing if there is none.
[[nodiscard]] std::optional<AudioObjectId> defaultOutputDevice(const AudioObjects& objects);

/// The volume of a device, 0 to 1, averaged over the channels; nothing unless it can be read and set.
[[nodiscard]] std::optional<float> outputVolume(const AudioObjects& objects, AudioObjectId device);

/// Sets all channels to `volume`, clamped to 0 to 1. Returns false if the device has no volume (now) or the
/// audio system rejects the write.
bool setOutputVolume(AudioObjects& objects, AudioObjectId device, float volume);

/// Restores a volume (0 to 1) that the program left faded when it died. Only raises the volume: a higher one
/// was set by the user since. If the device is absent, the audio objects apply the volume when it returns.
/// Returns false like setOutputVolume().
bool raiseOutputVolume(AudioObjects& objects, AudioObjectId device, float volume);

/// Whether the device has a settable mute switch that is off. A device that the user has muted must stay
/// muted.
[[nodiscard]] bool canMute(const AudioObjects& objects, AudioObjectId device);
void setMuted(AudioObjects& objects, AudioObjectId device, bool muted);

}  // namespace sordin
