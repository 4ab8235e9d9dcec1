// SPDX-License-Identifier: MIT
// An output device as fading sees it: one volume, or a mute switch, over the properties of audio objects.
#pragma once

#include "platform/audio_objects.h"

#include <optional>

namespace sordin {

/// None while there is no output device.
[[nodiscard]] std::optional<AudioObjectId> defaultOutputDevice(const AudioObjects& objects);

/// 0 to 1, the average over the channels; none where it cannot be both read and set.
[[nodiscard]] std::optional<float> outputVolume(const AudioObjects& objects, AudioObjectId device);

/// Sets all channels to `volume`, limited to 0 to 1. False if the audio system does not take it, or the
/// device has no volume (any more, or yet).
bool setOutputVolume(AudioObjects& objects, AudioObjectId device, float volume);

/// Brings back a volume (0 to 1) that a program left down: only ever upwards, since what is above it the user
/// has set since. A device that is away takes it when it returns; what it has until then nobody knows. False
/// as of setOutputVolume().
bool raiseOutputVolume(AudioObjects& objects, AudioObjectId device, float volume);

/// Whether it has a mute switch that can be set, and that is off: what the user has muted stays so.
[[nodiscard]] bool canMute(const AudioObjects& objects, AudioObjectId device);
void setMuted(AudioObjects& objects, AudioObjectId device, bool muted);

}  // namespace sordin
