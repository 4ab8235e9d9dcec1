// SPDX-License-Identifier: MIT
#pragma once

#include "audio/printer.h"
#include "platform/audio_objects.h"

#include <memory>
#include <utility>

namespace sordin::audio {

/// Audio objects whose volumes are printed as they are written.
class TracingAudioObjects final : public AudioObjects {
public:
    TracingAudioObjects(std::shared_ptr<AudioObjects> objects, Printer& printer)
        : objects_(std::move(objects)), printer_(printer) {}

    [[nodiscard]] std::optional<AudioPropertyValue> get(AudioObjectId object,
                                                        const AudioProperty& property) const override {
        return objects_->get(object, property);
    }
    bool set(AudioObjectId object, const AudioProperty& property, const AudioPropertyValue& value) override {
        const bool done = objects_->set(object, property, value);
        const auto device = objects_->record(object);
        const auto* volume = std::get_if<float>(&value);
        if (done && device && volume != nullptr) {
            printer_.volume(device->name, *volume);
        }
        return done;
    }
    [[nodiscard]] bool has(AudioObjectId object, const AudioProperty& property) const override {
        return objects_->has(object, property);
    }
    [[nodiscard]] bool settable(AudioObjectId object, const AudioProperty& property) const override {
        return objects_->settable(object, property);
    }
    bool flush(std::chrono::milliseconds deadline) override { return objects_->flush(deadline); }
    [[nodiscard]] std::optional<OutputDeviceRecord> record(AudioObjectId device) const override {
        return objects_->record(device);
    }
    AudioObjectId adopt(const OutputDeviceRecord& record) override { return objects_->adopt(record); }
    [[nodiscard]] bool present(AudioObjectId device) const override { return objects_->present(device); }
    void onDevicesChanged(std::function<void()> handler) override {
        objects_->onDevicesChanged(std::move(handler));
    }

private:
    const std::shared_ptr<AudioObjects> objects_;
    Printer& printer_;
};

}  // namespace sordin::audio
