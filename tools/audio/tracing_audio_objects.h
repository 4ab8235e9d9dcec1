// SPDX-License-Identifier: MIT
#pragma once

#include "audio/printer.h"
#include "rig/forwarding_audio_objects.h"

#include <memory>
#include <utility>

namespace sordin::audio {

/// Audio objects that print each written volume.
class TracingAudioObjects final : public ForwardingAudioObjects {
public:
    TracingAudioObjects(std::shared_ptr<AudioObjects> objects, Printer& printer)
        : ForwardingAudioObjects(std::move(objects)), printer_(printer) {}

    bool set(AudioObjectId object, const AudioProperty& property, const AudioPropertyValue& value) override {
        const bool done = ForwardingAudioObjects::set(object, property, value);
        const auto device = record(object);
        const auto* volume = std::get_if<float>(&value);
        if (done && device && volume != nullptr) {
            printer_.volume(device->name, *volume);
        }
        return done;
    }

private:
    Printer& printer_;
};

}  // namespace sordin::audio
