// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/audio/linux_audio.h"
#include "platform/linux/storage/file_user_defaults.h"
#include "rig/wait_until.h"
#include "support/asio_serial_queue.h"
#include "system/server_kind.h"
#include "system/sink_volume.h"
#include "volume/pending_restore.h"
#include "volume/volume_controller.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace sordin {

/// The real volume controller on a private audio server.
class VolumeSystemTest : public testing::Test {
protected:
    using Channels = std::vector<float>;
    static constexpr std::chrono::seconds deadline{20};
    static constexpr auto sinkA = "test-sink-A";
    static constexpr auto sinkB = "test-sink-B";

    /// The linear volume of a channel at this slider position.
    static float cubed(double slider) { return static_cast<float>(slider * slider * slider); }

    void begin(ServerKind kind = ServerKind::pipeWire, const AudioServerOptions& options = {}) {
        server = makeServer(kind, options);
        server->start();
        startProgram();
        EXPECT_TRUE(audio->waitUntilKnown(deadline));
    }

    void startProgram() {
        audio.emplace();
        objects = audio->objects();
        queue = std::make_shared<AsioSerialQueue>("sordin.volume");
        controller = std::make_shared<VolumeController>(queue, objects, defaults);
        controller->recoverFromCrash();
    }

    /// Ends the program without a restore.
    void crash() {
        controller.reset();
        queue.reset();
        objects.reset();
        audio.reset();
    }

    /// Waits until the program sees this sink as the default, and returns its id.
    AudioObjectId defaultDevice(const std::string& name) {
        AudioObjectId device = 0;
        EXPECT_TRUE(waitUntil(
            [&] {
                device = read<std::uint32_t>(*objects, systemAudioObject, audio_property::defaultOutputDevice)
                             .value_or(0);
                const auto record = objects->record(device);
                return record && record->name == name;
            },
            deadline))
            << name;
        return device;
    }

    testing::AssertionResult becomes(const std::string& sink, const Channels& channels) {
        return sinkBecomes(*server, sink, channels, deadline);
    }
    bool recordIsGone() {
        return waitUntil([&] { return !defaults->number(PendingRestore::key); }, deadline);
    }
    /// Whether the program reads this volume.
    bool sees(AudioObjectId device, float scalar) {
        return waitUntil(
            [&] {
                const auto now = read<float>(*objects, device, audio_property::volume(0));
                return std::fabs(now.value_or(-1) - scalar) < 1e-3F;
            },
            deadline);
    }

    std::unique_ptr<AudioServer> server;
    TemporaryFolder folder;
    std::shared_ptr<UserDefaults> defaults = std::make_shared<FileUserDefaults>(
        folder.path(), std::make_shared<AsioSerialQueue>("sordin.defaults"));
    std::optional<LinuxAudio> audio;
    std::shared_ptr<AudioObjects> objects;
    std::shared_ptr<SerialQueue> queue;
    std::shared_ptr<VolumeController> controller;
};

}  // namespace sordin
