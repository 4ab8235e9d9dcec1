// SPDX-License-Identifier: MIT
// Gives back what a program that is gone took from a device.
#pragma once

#include "platform/audio_objects.h"
#include "volume/volume_guard.h"

#include <chrono>
#include <optional>

namespace sordin {

/// The device that a duck took something from; waits up to `patience` for it to be there. One kept without
/// its name is the default output device. Takes the objects' handler of changes for itself meanwhile.
[[nodiscard]] std::optional<AudioObjectId> awaitDevice(AudioObjects& objects, const DuckInForce& duck,
                                                       std::chrono::milliseconds patience);

/// Raises the volume of a device that is there to what it was, or ends its muting, and waits for the audio
/// system to have done so; false if it has not within a second. Touches no other device.
[[nodiscard]] bool giveBack(AudioObjects& objects, AudioObjectId device, const DuckInForce& duck);

}  // namespace sordin
