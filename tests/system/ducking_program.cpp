// SPDX-License-Identifier: MIT
// ducking_program FOLDER [without-lock] [mute-only]: fades like the application, for tests that kill it. It
// reads the commands "duck", "restore", "restore-now" and "guard" from standard input, one per line, and
// answers "done", or the guard's process id to "guard".
#include "guard/guard_process.h"
#include "platform/linux/audio/linux_audio.h"
#include "platform/linux/sandbox/network_filter.h"
#include "platform/linux/storage/file_user_defaults.h"
#include "platform/linux/storage/pending_restore_lock.h"
#include "rig/forwarding_audio_objects.h"
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

/// Devices without a volume control, like some digital outputs.
class MuteOnly final : public ForwardingAudioObjects {
public:
    using ForwardingAudioObjects::ForwardingAudioObjects;

    [[nodiscard]] bool has(AudioObjectId object, const AudioProperty& property) const override {
        return property.selector != audio_property::volume(0).selector &&
               ForwardingAudioObjects::has(object, property);
    }
    [[nodiscard]] bool settable(AudioObjectId object, const AudioProperty& property) const override {
        return has(object, property);
    }
};

bool hasDevice(const AudioObjects& objects) {
    return read<std::uint32_t>(objects, systemAudioObject, audio_property::defaultOutputDevice) > 0U;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        return 2;
    }
    // The guard and the connection to the audio server must work with the network filter.
    static_cast<void>(refuseNetwork());
    const std::filesystem::path folder = argv[1];
    const std::set<std::string> options(argv + 2, argv + argc);
    std::optional<PendingRestoreLock> lock;
    if (options.count("without-lock") == 0) {
        lock.emplace(folder, PendingRestoreLock::patienceAtStart);
    }
    const auto guard = std::make_shared<GuardProcess>(
        findHelper(programPath(argv[0]), "sordin-volume-guard").value(), folder);
    const LinuxAudio audio;
    std::shared_ptr<AudioObjects> objects = audio.objects();
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
