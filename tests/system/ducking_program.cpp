// SPDX-License-Identifier: MIT
// ducking_program FOLDER [without-lock] [mute-only]: what the application does around fading, to be killed by
// tests. On standard input it takes "duck", "restore", "restore-now" and "guard", a line each, and answers
// "done", to the last with the guard's number.
#include "guard/guard_process.h"
#include "platform/linux/pipewire/audio_objects.h"
#include "platform/linux/sandbox/network_filter.h"
#include "platform/linux/storage/file_user_defaults.h"
#include "platform/linux/storage/pending_restore_lock.h"
#include "rig/wait_until.h"
#include "support/asio_serial_queue.h"
#include "support/own_files.h"
#include "support/program_path.h"
#include "volume/volume_controller.h"

#include <iostream>
#include <set>
#include <string>

namespace {

using namespace sordin;
using namespace std::chrono_literals;

/// Devices without a volume, as some digital outputs are.
class MuteOnly final : public AudioObjects {
public:
    explicit MuteOnly(std::shared_ptr<AudioObjects> objects) : objects_(std::move(objects)) {}

    [[nodiscard]] std::optional<AudioPropertyValue> get(AudioObjectId object,
                                                        const AudioProperty& property) const override {
        return objects_->get(object, property);
    }
    bool set(AudioObjectId object, const AudioProperty& property, const AudioPropertyValue& value) override {
        return objects_->set(object, property, value);
    }
    [[nodiscard]] bool has(AudioObjectId object, const AudioProperty& property) const override {
        return property.selector != audio_property::volume(0).selector && objects_->has(object, property);
    }
    [[nodiscard]] bool settable(AudioObjectId object, const AudioProperty& property) const override {
        return has(object, property);
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

bool hasDevice(const AudioObjects& objects) {
    return read<std::uint32_t>(objects, systemAudioObject, audio_property::defaultOutputDevice) > 0U;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        return 2;
    }
    // The guard and the connection to the audio server have to do with what it leaves.
    static_cast<void>(refuseNetwork());
    const std::filesystem::path folder = argv[1];
    const std::set<std::string> options(argv + 2, argv + argc);
    std::optional<PendingRestoreLock> lock;
    if (options.count("without-lock") == 0) {
        lock.emplace(folder, PendingRestoreLock::patienceAtStart);
    }
    const auto guard = std::make_shared<GuardProcess>(
        findHelper(programPath(argv[0]), "sordin-volume-guard").value(), folder);
    std::shared_ptr<AudioObjects> objects =
        std::make_shared<pipewire::PipeWireAudioObjects>(std::make_shared<pipewire::Session>());
    if (options.count("mute-only") > 0) {
        objects = std::make_shared<MuteOnly>(objects);
    }
    const auto queue = std::make_shared<AsioSerialQueue>("sordin.volume");
    const auto controller = std::make_shared<VolumeController>(
        queue, objects,
        std::make_shared<FileUserDefaults>(folder, std::make_shared<AsioSerialQueue>("sordin.defaults")),
        guard);
    controller->recoverFromCrash();
    if (!waitUntil([&] { return hasDevice(*objects); }, 20s)) {
        return 1;
    }
    std::cout << "ready" << std::endl;
    for (std::string command; std::getline(std::cin, command);) {
        if (command == "duck") {
            controller->duck(0, 0.15);
        } else if (command == "restore") {
            controller->restore(0.6);
        } else if (command == "restore-now") {
            controller->restoreImmediately();
        }
        queue->sync([] {});
        std::cout << (command == "guard" ? std::to_string(guard->pid()) : "done") << std::endl;
    }
    controller->restoreImmediately();
    return 0;
}
