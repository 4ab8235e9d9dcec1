// SPDX-License-Identifier: MIT
#pragma once

#include "volume/pending_restore.h"

#include <variant>

namespace sordin {

/// A device that was muted because it has no settable volume.
struct MutedDevice {
    OutputDeviceRecord device;

    bool operator==(const MutedDevice&) const = default;
};

/// The state to restore after a duck: a volume, or the sound of a muted device.
using DuckInForce = std::variant<PendingRestore, MutedDevice>;

/// Restores the device from outside the program if the program dies during a duck. Functions are called on
/// one thread at a time. They do not block and report no failure: without a working guard there is no such
/// protection.
class VolumeGuard {
public:
    virtual ~VolumeGuard() = default;

    /// Reports that a device is about to be faded or muted. Replaces the previous report.
    virtual void inForce(const DuckInForce& duck) = 0;

    /// Reports that everything has been restored.
    virtual void givenBack() = 0;
};

}  // namespace sordin
