// SPDX-License-Identifier: MIT
#pragma once

#include "platform/audio_objects.h"

#include <memory>
#include <utility>

namespace sordin {

/// Forwards to other audio objects; base class for decorators.
class ForwardingAudioObjects : public AudioObjects {
public:
    explicit ForwardingAudioObjects(std::shared_ptr<AudioObjects> objects) : objects_(std::move(objects)) {}

    [[nodiscard]] std::optional<AudioPropertyValue> get(AudioObjectId object,
                                                        const AudioProperty& property) const override {
        return objects_->get(object, property);
    }
    bool set(AudioObjectId object, const AudioProperty& property, const AudioPropertyValue& value) override {
        return objects_->set(object, property, value);
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
};

}  // namespace sordin
