// SPDX-License-Identifier: MIT
#pragma once

#include "platform/audio_objects.h"
#include "platform/user_defaults.h"

#include <optional>

namespace sordin {

/// What has to come back if the program ends while the volume is down, as it lies in the user defaults.
struct PendingRestore {
    /// Of the device that was faded last, or of one that had yet to take its volume when another was faded.
    enum class Slot { latest, away };

    float volume = 0;  ///< 0 to 1
    std::optional<OutputDeviceRecord>
        device;  ///< absent when only the volume was kept: then any default device

    bool operator==(const PendingRestore&) const = default;

    /// The key of the latest volume; what else is kept has keys that begin with "pendingRestore" too.
    static constexpr auto key = "pendingRestoreVolume";

    /// The volume at which the mixers of audio servers end. A higher reference is read as this one: what is
    /// damaged must not deafen anybody.
    static constexpr double highestReference = 1.5;

    /// Whether ratios can be those of a device: from 0 to 1, and one is 1 if there are any.
    [[nodiscard]] static bool areRatios(const std::vector<float>& ratios);

    /// None when nothing is pending, or what is there is no number; a volume outside 0 to 1 is limited to
    /// that. What describes the device counts only if all of it can be read.
    [[nodiscard]] static std::optional<PendingRestore> read(const UserDefaults& defaults,
                                                            Slot slot = Slot::latest);

    void write(UserDefaults& defaults, Slot slot = Slot::latest) const;

    static void remove(UserDefaults& defaults, Slot slot = Slot::latest);
};

}  // namespace sordin
