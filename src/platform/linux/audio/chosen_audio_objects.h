// SPDX-License-Identifier: MIT
#pragma once

#include "platform/audio_objects.h"
#include "platform/linux/audio/server_choice.h"

#include <memory>

namespace sordin {

/// The audio objects of the server that plays the sound. Identifiers of the other server's objects remain
/// valid.
class ChosenAudioObjects final : public AudioObjects {
public:
    /// None of the arguments may be null.
    ChosenAudioObjects(std::shared_ptr<ServerChoice> choice, std::shared_ptr<AudioObjects> pipeWire,
                       std::shared_ptr<AudioObjects> pulse);

    [[nodiscard]] std::optional<AudioPropertyValue> get(AudioObjectId object,
                                                        const AudioProperty& property) const override;
    bool set(AudioObjectId object, const AudioProperty& property, const AudioPropertyValue& value) override;
    [[nodiscard]] bool has(AudioObjectId object, const AudioProperty& property) const override;
    [[nodiscard]] bool settable(AudioObjectId object, const AudioProperty& property) const override;
    bool flush(std::chrono::milliseconds deadline) override;
    [[nodiscard]] std::optional<OutputDeviceRecord> record(AudioObjectId device) const override;
    AudioObjectId adopt(const OutputDeviceRecord& record) override;
    [[nodiscard]] bool present(AudioObjectId device) const override;
    void onDevicesChanged(std::function<void()> handler) override;

private:
    using Server = ServerChoice::Server;

    [[nodiscard]] AudioObjects& objectsOf(Server server) const;
    /// Returns the server of an object; for the system object, the chosen server.
    [[nodiscard]] Server serverOf(AudioObjectId object) const;

    const std::shared_ptr<ServerChoice> choice_;
    const std::shared_ptr<AudioObjects> pipeWire_;
    const std::shared_ptr<AudioObjects> pulse_;
};

}  // namespace sordin
