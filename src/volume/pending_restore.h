// SPDX-License-Identifier: MIT
#pragma once

#include "platform/audio_objects.h"
#include "platform/user_defaults.h"

#include <optional>

namespace sordin {

/// The volume to restore if the program ends during a duck, and its device. Stored in the user defaults.
struct PendingRestore {
    /// `latest` holds the device that was faded last. `away` holds a device whose restore was still pending
    /// when another device was faded.
    enum class Slot { latest, away };

    float volume = 0;  ///< 0 to 1
    /// Empty if only the volume was stored; it then applies to the default output device.
    std::optional<OutputDeviceRecord> device;

    bool operator==(const PendingRestore&) const = default;

    /// The key of the latest volume. All other keys begin with "pendingRestore", too.
    static constexpr auto key = "pendingRestoreVolume";

    /// The maximum volume of common mixers (150 %). Higher stored references are reduced to it, so that a
    /// damaged record cannot make the sound dangerously loud.
    static constexpr double highestReference = 1.5;

    /// Whether `ratios` are valid for a device: all are 0 to 1, and at least one is 1 unless the list is
    /// empty.
    [[nodiscard]] static bool areRatios(const std::vector<float>& ratios);

    /// Reads a record. Returns nothing if there is none or its volume is not a number. Clamps the volume to 0
    /// to 1. Ignores the device unless all of its fields are valid.
    [[nodiscard]] static std::optional<PendingRestore> read(const UserDefaults& defaults,
                                                            Slot slot = Slot::latest);

    void write(UserDefaults& defaults, Slot slot = Slot::latest) const;

    static void remove(UserDefaults& defaults, Slot slot = Slot::latest);
};

}  // namespace sordin
