// SPDX-License-Identifier: MIT
// Restores a device after the program has died.
#pragma once

#include "platform/audio_objects.h"
#include "volume/volume_guard.h"

#include <chrono>
#include <optional>

namespace sordin {

/// Finds the device of a duck and waits up to `patience` until it is present. The device is the default
/// output device if the record contains none. Returns nothing if it stays absent. Replaces the handler of
/// AudioObjects::onDevicesChanged() and clears it at the end.
[[nodiscard]] std::optional<AudioObjectId> awaitDevice(AudioObjects& objects, const DuckInForce& duck,
                                                       std::chrono::milliseconds patience);

/// Raises the volume of a present device to the recorded one, or unmutes it. Blocks until the audio system
/// has confirmed it. Returns false if the device does not accept the volume within 1 s, or if the
/// confirmation takes longer than 1 s.
[[nodiscard]] bool giveBack(AudioObjects& objects, AudioObjectId device, const DuckInForce& duck);

}  // namespace sordin
