// SPDX-License-Identifier: MIT
#pragma once

#include "platform/audio_objects.h"
#include "platform/user_defaults.h"
#include "support/serial_queue.h"
#include "volume/pending_restore.h"
#include "volume/volume_guard.h"

#include <functional>
#include <memory>
#include <optional>

namespace sordin {

/// Fades the default output device down for an ad and back up after it, and guarantees that the volume is
/// restored, also after a crash. Uses the mute switch of a device without a settable volume.
///
/// All state belongs to one serial queue. Hold the controller by a shared pointer: posted work refers to it
/// weakly. Does not report failures of the audio system: without a device there is no duck.
class VolumeController : public std::enable_shared_from_this<VolumeController> {
public:
    /// Only `guard` may be null. `queue` is labeled "sordin.volume". The controller calls the guard on the
    /// queue: before it changes a device, and after the audio system has confirmed the last restore.
    VolumeController(std::shared_ptr<SerialQueue> queue, std::shared_ptr<AudioObjects> objects,
                     std::shared_ptr<UserDefaults> defaults, std::shared_ptr<VolumeGuard> guard = nullptr);
    ~VolumeController();
    VolumeController(const VolumeController&) = delete;
    VolumeController& operator=(const VolumeController&) = delete;

    /// Sets the handler that is called on the queue with true when a duck begins to lower or mute the device,
    /// and with false when its restore begins. The handler must not block. Call before all other functions.
    void onLowered(std::function<void(bool)> handler);

    /// Fades the default output device to `fraction` (0 to 1) of its volume within `ramp` seconds. Does
    /// nothing during a duck. Asynchronous; callable from any thread.
    void duck(float fraction, double ramp);

    /// Fades the ducked device back to its volume within `ramp` seconds, even if another device has become
    /// the default. Does nothing without a duck. Asynchronous; callable from any thread.
    void restore(double ramp);

    /// Restores the volume without a ramp and blocks until that is done. For the end of the program. Callable
    /// from any thread.
    void restoreImmediately();

    /// Ignores all later calls of duck(). At the end of the program, call it before restoreImmediately(),
    /// because other threads may still call duck(). Asynchronous; callable from any thread.
    void refuseDucks();

    /// Restores a volume that an earlier run of the program left faded, as soon as there is an output device.
    /// Only raises the volume. Call once, before the first duck. Asynchronous; callable from any thread.
    void recoverFromCrash();

private:
    struct Ramp {
        AudioObjectId device;
        float from;
        float to;
        int steps;
        bool restoring;
        int counter = 0;
    };
    /// A device whose restore is pending. Its record is kept until the restore is confirmed.
    struct Awaited {
        AudioObjectId device;
        bool written;  // the audio system has accepted the volume but not confirmed it
    };

    /// Posts `action(*this)`, which is skipped if the controller has been destroyed.
    template <class Action>
    void post(Action action);
    void duckNow(float fraction, double seconds);
    void restoreNow(double seconds);
    void restoreAtOnce();
    void tryToRecover();
    void devicesChanged();

    void setLowered(bool lowered);
    void startRamp(Ramp ramp);
    void stepRamp();
    void cancelRamp();
    /// Ends a restore ramp immediately at its target volume.
    void finishRestoreRamp();
    /// Restores a device that was muted.
    void unmute();
    /// Call when the volume of a device has been restored. `written` is false if the device has rejected it.
    /// Removes the record if the audio system confirms the volume. Otherwise, or if the device is absent, the
    /// restore stays pending and is repeated.
    void restored(AudioObjectId device, bool written,
                  PendingRestore::Slot slot = PendingRestore::Slot::latest);
    void tryAgain(const std::optional<Awaited>& awaited, PendingRestore::Slot slot);
    /// Call before `device` is faded. Moves the record of another device with a pending restore to
    /// Slot::away.
    void setAwaitedAside(AudioObjectId device);
    void tellGuard(const DuckInForce& duck);
    /// Reports the remaining record to the guard, or that none remains.
    void tellGuardTheRest();

    const std::shared_ptr<SerialQueue> queue_;
    const std::shared_ptr<AudioObjects> objects_;
    const std::shared_ptr<UserDefaults> defaults_;
    const std::shared_ptr<VolumeGuard> guard_;  // may be null

    Timer timer_;
    Timer confirmation_;                   // until a pending restore is checked again
    std::optional<Ramp> ramp_;             // the ramp in progress
    std::function<void(bool)> onLowered_;  // may be empty
    bool lowered_ = false;                 // last value passed to onLowered_
    bool ducked_ = false;
    bool refusing_ = false;
    AudioObjectId device_ = 0;  // the ducked device
    std::optional<float> savedVolume_;
    bool usedMute_ = false;
    bool recovering_ = false;          // a record of an earlier run is pending until there is a device
    std::optional<Awaited> awaiting_;  // pending restore of Slot::latest
    std::optional<Awaited> away_;      // pending restore of Slot::away
    int refusals_ = 0;                 // consecutive rejected volumes
};

}  // namespace sordin
