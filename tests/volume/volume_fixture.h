// SPDX-License-Identifier: MIT
#pragma once

#include "fakes/fake_audio_objects.h"
#include "fakes/fake_user_defaults.h"
#include "support/manual_serial_queue.h"
#include "volume/pending_restore.h"
#include "volume/volume_controller.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

namespace sordin {

/// A controller over devices in memory. The test controls the time.
class VolumeTest : public testing::Test {
protected:
    static constexpr AudioObjectId speakers = 10;
    static constexpr AudioObjectId headphones = 11;

    struct Write {
        long milliseconds;
        AudioObjectId device;
        std::uint32_t element;
        float volume;
        bool pending;  // whether the record existed at the time of the write
    };

    VolumeTest() {
        objects->devices[speakers] = {"speakers", {{0, 0.8F}}, {}};
        objects->devices[headphones] = {"headphones", {{0, 0.5F}}, {}};
        objects->defaultDevice = speakers;
        objects->onVolumeWritten = [this](AudioObjectId device, std::uint32_t element, float volume) {
            writes.push_back({milliseconds(), device, element, volume, pending().has_value()});
        };
    }

    [[nodiscard]] long milliseconds() const {
        return static_cast<long>(std::chrono::duration_cast<std::chrono::milliseconds>(queue->now()).count());
    }

    [[nodiscard]] std::optional<double> pending() const { return defaults->number(PendingRestore::key); }

    [[nodiscard]] float volumeOf(AudioObjectId device, std::uint32_t element = 0) const {
        return objects->devices.at(device).volumes.at(element);
    }

    void pass(long ms) { queue->advance(std::chrono::milliseconds(ms)); }

    void duck(float fraction = 0, long ms = 1000) {
        controller->duck(fraction, 0.15);
        pass(ms);
    }

    void restore(long ms = 1000) {
        controller->restore(0.6);
        pass(ms);
    }

    std::shared_ptr<ManualSerialQueue> queue = std::make_shared<ManualSerialQueue>("sordin.volume");
    std::shared_ptr<FakeAudioObjects> objects = std::make_shared<FakeAudioObjects>();
    std::shared_ptr<FakeUserDefaults> defaults = std::make_shared<FakeUserDefaults>();
    std::vector<Write> writes;
    std::shared_ptr<VolumeController> controller =
        std::make_shared<VolumeController>(queue, objects, defaults);
};

}  // namespace sordin
