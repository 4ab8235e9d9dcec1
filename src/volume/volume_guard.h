// SPDX-License-Identifier: MIT
#pragma once

#include "volume/pending_restore.h"

#include <variant>

namespace sordin {

/// A device that is muted because it has no volume that could be faded.
struct MutedDevice {
    OutputDeviceRecord device;

    bool operator==(const MutedDevice&) const = default;
};

/// What a device is owed while a duck is in force: its volume, or its sound.
using DuckInForce = std::variant<PendingRestore, MutedDevice>;

/// Somebody outside the program who gives back what a duck took, should the program die before it does. Is
/// told on one thread at a time, and neither waits nor fails: a guard that cannot be had is as none.
class VolumeGuard {
public:
    virtual ~VolumeGuard() = default;

    /// A device is about to be faded or muted; takes the place of what was told before.
    virtual void inForce(const DuckInForce& duck) = 0;

    /// Everything has been given back.
    virtual void givenBack() = 0;
};

}  // namespace sordin
