// SPDX-License-Identifier: MIT
#include "volume/volume_controller.h"

#include "volume/output_device.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace sordin {

namespace {

using Slot = PendingRestore::Slot;

constexpr double stepSeconds = 0.02;
constexpr auto stepInterval = std::chrono::milliseconds(20);
/// An audio server confirms within 1 or 2 ms unless it hangs.
constexpr auto patienceForConfirmation = std::chrono::milliseconds(250);
/// Time between two checks of a pending restore.
constexpr auto confirmationInterval = std::chrono::seconds(1);
/// A device can appear before its volume is available. After this number of rejected volumes the record is
/// left to the next start of the program.
constexpr int mostRefusals = 60;

/// The smoothstep curve, for `t` from 0 to 1. Its slope is 0 at both ends.
float smoothstep(float t) {
    return t * t * (3.0F - 2.0F * t);
}

int stepsIn(double seconds) {
    constexpr double mostSteps = 10'000;
    return static_cast<int>(std::clamp(seconds / stepSeconds, 1.0, mostSteps));
}

}  // namespace

VolumeController::VolumeController(std::shared_ptr<SerialQueue> queue, std::shared_ptr<AudioObjects> objects,
                                   std::shared_ptr<UserDefaults> defaults, std::shared_ptr<VolumeGuard> guard)
    : queue_(std::move(queue)),
      objects_(std::move(objects)),
      defaults_(std::move(defaults)),
      guard_(std::move(guard)) {}

VolumeController::~VolumeController() {
    objects_->onDevicesChanged({});
}

template <class Action>
void VolumeController::post(Action action) {
    queue_->post([weak = weak_from_this(), action] {
        if (const auto self = weak.lock()) {
            action(*self);
        }
    });
}

void VolumeController::onLowered(std::function<void(bool)> handler) {
    post([handler = std::move(handler)](VolumeController& self) { self.onLowered_ = handler; });
}

void VolumeController::setLowered(bool lowered) {
    if (std::exchange(lowered_, lowered) != lowered && onLowered_) {
        onLowered_(lowered);
    }
}

void VolumeController::duck(float fraction, double ramp) {
    post([fraction, ramp](VolumeController& self) { self.duckNow(fraction, ramp); });
}

void VolumeController::restore(double ramp) {
    post([ramp](VolumeController& self) { self.restoreNow(ramp); });
}

void VolumeController::refuseDucks() {
    post([](VolumeController& self) { self.refusing_ = true; });
}

void VolumeController::restoreImmediately() {
    queue_->sync([this] { restoreAtOnce(); });
}

void VolumeController::recoverFromCrash() {
    // Lock the weak pointer on the queue only. Otherwise the audio system's thread could hold the last
    // reference and destroy the controller.
    objects_->onDevicesChanged([queue = queue_, weak = weak_from_this()] {
        queue->post([weak] {
            if (const auto self = weak.lock()) {
                self->devicesChanged();
            }
        });
    });
    post([](VolumeController& self) {
        self.recovering_ = true;
        self.tryToRecover();
    });
}

void VolumeController::duckNow(float fraction, double seconds) {
    if (ducked_ || refusing_) {
        return;
    }
    tryToRecover();  // a duck must not overwrite the record of a crash before its restore
    const auto device = defaultOutputDevice(*objects_);
    if (!device || recovering_) {
        return;
    }
    const bool returning = ramp_ && ramp_->restoring;
    if (returning && ramp_->device != *device) {
        finishRestoreRamp();
    }
    const auto current = outputVolume(*objects_, *device);
    if (current) {
        // During a restore ramp the user's volume is the ramp's target, not the current volume.
        savedVolume_ = returning && ramp_ ? ramp_->to : *current;
        usedMute_ = false;
        setAwaitedAside(*device);
        const PendingRestore pending{*savedVolume_, objects_->record(*device)};
        tellGuard(pending);
        pending.write(*defaults_);
        startRamp({*device, *current, *savedVolume_ * fraction, stepsIn(seconds), false});
    } else if (canMute(*objects_, *device)) {
        savedVolume_.reset();
        usedMute_ = true;
        if (auto record = objects_->record(*device)) {
            tellGuard(MutedDevice{std::move(*record)});
        }
        setMuted(*objects_, *device, true);
    } else {
        return;
    }
    ducked_ = true;
    device_ = *device;
    setLowered(usedMute_ || *savedVolume_ * fraction < *savedVolume_);
}

void VolumeController::restoreNow(double seconds) {
    if (!std::exchange(ducked_, false)) {
        return;
    }
    setLowered(false);
    if (usedMute_) {
        unmute();
    } else if (savedVolume_) {
        startRamp(
            {device_, outputVolume(*objects_, device_).value_or(0), *savedVolume_, stepsIn(seconds), true});
    }
}

void VolumeController::restoreAtOnce() {
    finishRestoreRamp();
    cancelRamp();
    if (!std::exchange(ducked_, false)) {
        return;
    }
    setLowered(false);
    if (usedMute_) {
        unmute();
    } else if (savedVolume_) {
        restored(device_, setOutputVolume(*objects_, device_, *savedVolume_));
    }
}

void VolumeController::tryToRecover() {
    if (!recovering_) {
        return;
    }
    const auto away = PendingRestore::read(*defaults_, Slot::away);
    const auto latest = PendingRestore::read(*defaults_);
    if (!away && !latest) {
        recovering_ = false;
        return;
    }
    const auto fallback = defaultOutputDevice(*objects_);
    if (!fallback) {
        return;  // devicesChanged() tries again
    }
    recovering_ = false;
    for (const auto& [pending, slot] : {std::pair(away, Slot::away), {latest, Slot::latest}}) {
        if (pending) {
            const AudioObjectId device = pending->device ? objects_->adopt(*pending->device) : *fallback;
            tellGuard(*pending);
            restored(device, raiseOutputVolume(*objects_, device, pending->volume), slot);
        }
    }
}

void VolumeController::devicesChanged() {
    tryToRecover();
    tryAgain(awaiting_, Slot::latest);
    tryAgain(away_, Slot::away);
}

void VolumeController::tryAgain(const std::optional<Awaited>& awaited, Slot slot) {
    if (!awaited || !objects_->present(awaited->device)) {
        return;
    }
    const auto [device, written] = *awaited;
    const auto pending = written ? std::nullopt : PendingRestore::read(*defaults_, slot);
    restored(device, !pending || raiseOutputVolume(*objects_, device, pending->volume), slot);
}

void VolumeController::startRamp(Ramp ramp) {
    cancelRamp();
    ramp_ = ramp;
    timer_ = queue_->every(stepInterval, [weak = weak_from_this()] {
        if (const auto self = weak.lock()) {
            self->stepRamp();
        }
    });
    stepRamp();  // the first step is immediate
}

void VolumeController::stepRamp() {
    if (!ramp_) {
        return;
    }
    ++ramp_->counter;
    const Ramp now = *ramp_;
    if (now.counter < now.steps) {
        const float t = static_cast<float>(now.counter) / static_cast<float>(now.steps);
        setOutputVolume(*objects_, now.device, now.from + (now.to - now.from) * smoothstep(t));
        return;
    }
    cancelRamp();
    // Set the exact target, free of rounding errors.
    const bool written = setOutputVolume(*objects_, now.device, now.to);
    if (now.restoring) {
        restored(now.device, written);
    }
}

void VolumeController::cancelRamp() {
    timer_.cancel();
    ramp_.reset();
}

void VolumeController::finishRestoreRamp() {
    if (ramp_ && ramp_->restoring) {
        const Ramp last = *ramp_;
        cancelRamp();
        restored(last.device, setOutputVolume(*objects_, last.device, last.to));
    }
}

void VolumeController::unmute() {
    setMuted(*objects_, device_, false);
    if (awaiting_) {
        tellGuardTheRest();  // another device's restore is pending
    } else {
        restored(device_, true);
    }
}

void VolumeController::setAwaitedAside(AudioObjectId device) {
    if (away_ && away_->device == device) {
        PendingRestore::remove(*defaults_, Slot::away);  // the new duck writes a new record
        away_.reset();
    }
    if (awaiting_ && awaiting_->device != device) {
        const auto pending = PendingRestore::read(*defaults_);
        if (pending && pending->device) {  // a volume without a device could not be restored later
            pending->write(*defaults_, Slot::away);
            away_ = awaiting_;
        }
    }
    awaiting_.reset();
}

void VolumeController::restored(AudioObjectId device, bool written, Slot slot) {
    auto& awaiting = slot == Slot::latest ? awaiting_ : away_;
    const bool present = objects_->present(device);
    // Keep the record until the audio system has confirmed the volume, because nothing else would restore it.
    refusals_ = written ? 0 : refusals_ + 1;
    if (!present || !written || !objects_->flush(patienceForConfirmation)) {
        awaiting = Awaited{device, written};
        if (present && refusals_ < mostRefusals) {
            confirmation_ = queue_->after(confirmationInterval, [weak = weak_from_this()] {
                if (const auto self = weak.lock()) {
                    self->devicesChanged();
                }
            });
        }
        return;
    }
    PendingRestore::remove(*defaults_, slot);
    awaiting.reset();
    // A report of another, muted device must stay with the guard.
    const bool mutedMeanwhile = ducked_ && usedMute_;
    if (!mutedMeanwhile) {
        tellGuardTheRest();
    }
}

void VolumeController::tellGuardTheRest() {
    auto pending = PendingRestore::read(*defaults_);
    if (!pending) {
        pending = PendingRestore::read(*defaults_, Slot::away);
    }
    if (pending) {
        tellGuard(*pending);
    } else if (guard_) {
        guard_->givenBack();
    }
}

void VolumeController::tellGuard(const DuckInForce& duck) {
    if (guard_) {
        guard_->inForce(duck);
    }
}

}  // namespace sordin
