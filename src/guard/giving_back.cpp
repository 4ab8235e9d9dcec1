// SPDX-License-Identifier: MIT
#include "guard/giving_back.h"

#include "volume/output_device.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

namespace sordin {

namespace {

constexpr auto patienceForConfirmation = std::chrono::seconds(1);

/// Signals a change of devices. Shared with the handler, which may still run after it has been cleared.
struct Changes {
    std::mutex mutex;
    std::condition_variable condition;
    bool any = false;
};

std::optional<OutputDeviceRecord> recordOf(const DuckInForce& duck) {
    const auto* muted = std::get_if<MutedDevice>(&duck);
    return muted != nullptr ? std::optional(muted->device) : std::get<PendingRestore>(duck).device;
}

std::optional<AudioObjectId> presentDevice(AudioObjects& objects,
                                           const std::optional<OutputDeviceRecord>& record) {
    const auto device = record ? std::optional(objects.adopt(*record)) : defaultOutputDevice(objects);
    return device && objects.present(*device) ? device : std::nullopt;
}

}  // namespace

std::optional<AudioObjectId> awaitDevice(AudioObjects& objects, const DuckInForce& duck,
                                         std::chrono::milliseconds patience) {
    const auto changes = std::make_shared<Changes>();
    objects.onDevicesChanged([changes] {
        const std::lock_guard lock(changes->mutex);
        changes->any = true;
        changes->condition.notify_one();
    });
    const auto record = recordOf(duck);
    const auto end = std::chrono::steady_clock::now() + patience;
    auto device = presentDevice(objects, record);
    while (!device) {
        {
            std::unique_lock lock(changes->mutex);
            if (!changes->condition.wait_until(lock, end, [&] { return changes->any; })) {
                break;
            }
            changes->any = false;
        }
        device = presentDevice(objects, record);
    }
    objects.onDevicesChanged({});
    return device;
}

bool giveBack(AudioObjects& objects, AudioObjectId device, const DuckInForce& duck) {
    const auto* pending = std::get_if<PendingRestore>(&duck);
    if (pending == nullptr) {
        setMuted(objects, device, false);
    }
    // A device can appear before its volume is available.
    const auto end = std::chrono::steady_clock::now() + patienceForConfirmation;
    while (pending != nullptr && !raiseOutputVolume(objects, device, pending->volume)) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return objects.flush(patienceForConfirmation);
}

}  // namespace sordin
