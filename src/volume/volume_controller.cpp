// SPDX-License-Identifier: MIT
#include "volume/volume_controller.h"

#include "volume/pending_restore.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace sordin {

namespace {

constexpr double stepSeconds = 0.02;
constexpr auto stepInterval = std::chrono::milliseconds(20);

/// The smoothstep curve: starts and ends gently. `t` from 0 to 1.
float smoothstep(float t) {
    return t * t * (3.0F - 2.0F * t);
}

int stepsIn(double seconds) {
    constexpr double mostSteps = 10'000;
    return static_cast<int>(std::clamp(seconds / stepSeconds, 1.0, mostSteps));
}

}  // namespace

VolumeController::VolumeController(std::shared_ptr<SerialQueue> queue, std::shared_ptr<AudioObjects> objects,
                                   std::shared_ptr<UserDefaults> defaults)
    : queue_(std::move(queue)), objects_(std::move(objects)), defaults_(std::move(defaults)) {}

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

void VolumeController::duck(float fraction, double ramp) {
    post([fraction, ramp](VolumeController& self) { self.duckNow(fraction, ramp); });
}

void VolumeController::restore(double ramp) {
    post([ramp](VolumeController& self) { self.restoreNow(ramp); });
}

void VolumeController::restoreImmediately() {
    queue_->sync([this] { restoreAtOnce(); });
}

void VolumeController::recoverFromCrash() {
    // The audio system's thread must never be the last to know the controller, since it would have to end it.
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
    if (ducked_) {
        return;
    }
    tryToRecover();  // the record of a crash must not be overwritten before it has served
    const auto device = defaultOutputDevice();
    if (!device || recovering_) {
        return;
    }
    const bool returning = ramp_ && ramp_->restoring;
    if (returning && ramp_->device != *device) {
        finishRestoreRamp();
    }
    const auto current = volume(*device);
    if (current) {
        // Where a restore is on its way, its target is the true volume, not what it has got to.
        savedVolume_ = returning && ramp_ ? ramp_->to : *current;
        usedMute_ = false;
        PendingRestore{*savedVolume_, objects_->record(*device)}.write(*defaults_);
        awaiting_.reset();
        startRamp({*device, *current, *savedVolume_ * fraction, stepsIn(seconds), false});
    } else if (canMute(*device)) {
        savedVolume_.reset();
        usedMute_ = true;
        setMute(*device, true);
    } else {
        return;
    }
    ducked_ = true;
    device_ = *device;
}

void VolumeController::restoreNow(double seconds) {
    if (!std::exchange(ducked_, false)) {
        return;
    }
    if (usedMute_) {
        setMute(device_, false);
    } else if (savedVolume_) {
        startRamp({device_, volume(device_).value_or(0), *savedVolume_, stepsIn(seconds), true});
    }
}

void VolumeController::restoreAtOnce() {
    finishRestoreRamp();
    cancelRamp();
    if (!std::exchange(ducked_, false)) {
        return;
    }
    if (usedMute_) {
        setMute(device_, false);
    } else if (savedVolume_) {
        set(device_, *savedVolume_);
    }
    restored(device_);
}

void VolumeController::tryToRecover() {
    if (!recovering_) {
        return;
    }
    const auto pending = PendingRestore::read(*defaults_);
    if (!pending) {
        recovering_ = false;
        return;
    }
    const auto fallback = defaultOutputDevice();
    if (!fallback) {
        return;  // until there is one
    }
    recovering_ = false;
    const AudioObjectId device = pending->device ? objects_->adopt(*pending->device) : *fallback;
    // A device that is away takes the volume when it returns; what it has until then nobody knows.
    const bool away = !objects_->present(device);
    if (away || volume(device).value_or(1) < pending->volume) {
        set(device, pending->volume);
    }
    restored(device);
}

void VolumeController::devicesChanged() {
    tryToRecover();
    if (awaiting_ && objects_->present(*awaiting_)) {
        restored(*awaiting_);
    }
}

std::optional<AudioObjectId> VolumeController::defaultOutputDevice() const {
    const auto device =
        read<std::uint32_t>(*objects_, systemAudioObject, audio_property::defaultOutputDevice);
    return device && *device != 0 ? device : std::nullopt;
}

std::vector<std::uint32_t> VolumeController::volumeElements(AudioObjectId device) const {
    const std::vector<std::vector<std::uint32_t>> candidates{
        {0}, {1, 2}};  // the device as a whole, its front channels
    for (const auto& elements : candidates) {
        if (std::all_of(elements.begin(), elements.end(), [&](std::uint32_t element) {
                const auto property = audio_property::volume(element);
                return objects_->has(device, property) && objects_->settable(device, property);
            })) {
            return elements;
        }
    }
    return {};
}

std::optional<float> VolumeController::volume(AudioObjectId device) const {
    const auto elements = volumeElements(device);
    float sum = 0;
    for (const std::uint32_t element : elements) {
        const auto value = read<float>(*objects_, device, audio_property::volume(element));
        if (!value) {
            return std::nullopt;
        }
        sum += *value;
    }
    return elements.empty() ? std::nullopt : std::optional(sum / static_cast<float>(elements.size()));
}

void VolumeController::set(AudioObjectId device, float volume) {
    for (const std::uint32_t element : volumeElements(device)) {
        objects_->set(device, audio_property::volume(element), std::clamp(volume, 0.0F, 1.0F));
    }
}

bool VolumeController::canMute(AudioObjectId device) const {
    return objects_->has(device, audio_property::mute) && objects_->settable(device, audio_property::mute);
}

void VolumeController::setMute(AudioObjectId device, bool muted) {
    objects_->set(device, audio_property::mute, std::uint32_t{muted ? 1U : 0U});
}

void VolumeController::startRamp(Ramp ramp) {
    cancelRamp();
    ramp_ = ramp;
    timer_ = queue_->every(stepInterval, [weak = weak_from_this()] {
        if (const auto self = weak.lock()) {
            self->stepRamp();
        }
    });
    stepRamp();  // the first at once
}

void VolumeController::stepRamp() {
    if (!ramp_) {
        return;
    }
    ++ramp_->counter;
    const Ramp now = *ramp_;
    if (now.counter < now.steps) {
        const float t = static_cast<float>(now.counter) / static_cast<float>(now.steps);
        set(now.device, now.from + (now.to - now.from) * smoothstep(t));
        return;
    }
    cancelRamp();
    set(now.device, now.to);  // the curve ends there, but for rounding
    if (now.restoring) {
        restored(now.device);
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
        set(last.device, last.to);
        restored(last.device);
    }
}

void VolumeController::restored(AudioObjectId device) {
    if (objects_->present(device)) {
        PendingRestore::remove(*defaults_);
        awaiting_.reset();
    } else {
        awaiting_ = device;
    }
}

}  // namespace sordin
