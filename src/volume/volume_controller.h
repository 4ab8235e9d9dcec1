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

/// Fades the default output device down for an ad and back up after it, and makes sure that the volume comes
/// back whatever happens. Where a device has no settable volume its mute switch is used instead.
///
/// All state lives on one serial queue. Always held by shared pointers: work on the queue knows the
/// controller weakly. Failures of the audio system are silent: no device, no duck.
class VolumeController : public std::enable_shared_from_this<VolumeController> {
public:
    /// None may be null but the guard; `queue` is labelled "sordin.volume". The guard is told on the queue,
    /// before any change to a device and after the audio system has taken the last one back.
    VolumeController(std::shared_ptr<SerialQueue> queue, std::shared_ptr<AudioObjects> objects,
                     std::shared_ptr<UserDefaults> defaults, std::shared_ptr<VolumeGuard> guard = nullptr);
    ~VolumeController();
    VolumeController(const VolumeController&) = delete;
    VolumeController& operator=(const VolumeController&) = delete;

    /// Sets what is called, on the queue, with whether a duck has made a device lower, or has muted it, and
    /// no restore has begun since; when that changes. It must not wait. Before all else.
    void onLowered(std::function<void(bool)> handler);

    /// Fades the default output device to `fraction` (0 to 1) of its volume within `ramp` seconds; does
    /// nothing while a duck is in force. Any thread; happens on the queue, later.
    void duck(float fraction, double ramp);

    /// Fades the device that was ducked back to its volume within `ramp` seconds, also if another has become
    /// the default; does nothing when no duck is in force. Any thread; happens on the queue, later.
    void restore(double ramp);

    /// Puts the volume back at once, without a ramp, and returns when that is done. For the end of the
    /// program.
    void restoreImmediately();

    /// No duck that is asked for from now on happens: at the end of the program others may not have noticed
    /// yet. Any thread; before restoreImmediately(), so that the volume is back for good.
    void refuseDucks();

    /// Brings back a volume that an earlier run of the program left down, as soon as there is a device to
    /// bring it back to. It is only ever raised. Call once, before the first duck.
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
    /// A device that was restored but does not have its volume yet; the record stays until it has.
    struct Awaited {
        AudioObjectId device;
        bool written;  // it will have it, unless the audio system hangs
    };

    /// Posts `action(*this)` for as long as the controller lives.
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
    /// Takes a restore ramp to its end at once.
    void finishRestoreRamp();
    /// Ends a duck by the mute switch.
    void unmute();
    /// A device has been given its volume back: forgets the record, unless the device is away, has refused
    /// the volume (not `written`), or the audio system does not answer. Then it is tried again.
    void restored(AudioObjectId device, bool written,
                  PendingRestore::Slot slot = PendingRestore::Slot::latest);
    void tryAgain(const std::optional<Awaited>& awaited, PendingRestore::Slot slot);
    /// `device` is about to be faded: keeps the record of another that has yet to take its volume.
    void setAwaitedAside(AudioObjectId device);
    void tellGuard(const DuckInForce& duck);
    /// Of the record that is left, or that none is.
    void tellGuardTheRest();

    const std::shared_ptr<SerialQueue> queue_;
    const std::shared_ptr<AudioObjects> objects_;
    const std::shared_ptr<UserDefaults> defaults_;
    const std::shared_ptr<VolumeGuard> guard_;  // or none

    Timer timer_;
    Timer confirmation_;                   // until the audio system is asked again whether it has a volume
    std::optional<Ramp> ramp_;             // the one in progress
    std::function<void(bool)> onLowered_;  // or none
    bool lowered_ = false;                 // as told last
    bool ducked_ = false;
    bool refusing_ = false;
    AudioObjectId device_ = 0;  // the one that was ducked
    std::optional<float> savedVolume_;
    bool usedMute_ = false;
    bool recovering_ = false;  // a record of an earlier run waits for a device
    std::optional<Awaited> awaiting_;
    std::optional<Awaited> away_;  // the same, when another has been faded since
    int refusals_ = 0;             // since a volume was taken
};

}  // namespace sordin
