// SPDX-License-Identifier: MIT
// sordin-demo: Sordin at work without a desktop. An audio server of its own, a player that plays a broadcast
// to it, the real program listening; what it does is printed as it happens.
#include "demo/timeline.h"
#include "platform/linux/pipewire/audio_objects.h"
#include "replay/input_error.h"
#include "rig/private_audio_server.h"
#include "volume/output_device.h"

#include <chrono>
#include <cstdio>
#include <exception>
#include <thread>

namespace {

using namespace sordin;
using namespace std::chrono_literals;

constexpr int failed = 1;
constexpr int misused = 2;
constexpr auto deadline = 10s;

/// Whether a program plays.
bool plays(const AudioObjects& objects, pid_t program) {
    const auto processes =
        read<std::vector<AudioObjectId>>(objects, systemAudioObject, audio_property::processList);
    for (const AudioObjectId process : processes.value_or(std::vector<AudioObjectId>())) {
        if (read<std::int32_t>(objects, process, audio_property::processId) == program) {
            return read<std::uint32_t>(objects, process, audio_property::isRunningOutput).value_or(0) != 0;
        }
    }
    return false;
}

std::optional<float> volumeOf(const AudioObjects& objects) {
    const auto device = defaultOutputDevice(objects);
    return device ? outputVolume(objects, *device) : std::nullopt;
}

void demonstrate(const std::string& program, const std::string& broadcast, const std::string& labels) {
    const auto ads = replay::readAdLabels(std::filesystem::path(labels));
    PrivateAudioServer server({.sinks = {"Loudspeakers"}, .pulse = false});
    server.start();

    // As if the first-run guide had been finished; with settings and a history that end with the
    // demonstration.
    const std::filesystem::path home = server.folder() / "home";
    std::filesystem::create_directories(home / "config/Sordin");
    writeText(home / "config/Sordin/defaults.json", R"({"onboarded": true})");
    const std::filesystem::path log = home / "log";
    writeText(log, "");
    ChildProcess sordin(
        {program}, {.environment = {"XDG_CONFIG_HOME=" + (home / "config").string(),
                                    "XDG_DATA_HOME=" + (home / "data").string(),
                                    "DISPLAY=", "WAYLAND_DISPLAY=", "QT_LOGGING_RULES=sordin.*.info=true",
                                    "QT_FORCE_STDERR_LOGGING=1", "QT_MESSAGE_PATTERN=%{message}"},
                    .log = log});
    if (!waitUntil([&] { return contentsOf(log).find("listening") != std::string::npos; }, deadline)) {
        throw std::runtime_error("Sordin does not listen: " + contentsOf(log));
    }

    const auto session = std::make_shared<pipewire::Session>();
    const pipewire::PipeWireAudioObjects objects(session);
    ChildProcess player({"pw-play", broadcast}, {.log = server.folder() / "player"});
    if (!waitUntil([&] { return plays(objects, player.pid()); }, deadline)) {
        throw std::runtime_error("the player does not play: " + contentsOf(server.folder() / "player"));
    }
    demo::Timeline timeline(ads, log);
    const auto start = std::chrono::steady_clock::now();
    while (player.running()) {
        const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
        timeline.at(time.count(), volumeOf(objects));
        std::this_thread::sleep_for(10ms);
    }
    timeline.printSummary();
    sordin.kill(SIGTERM);
    if (sordin.wait(deadline) != 0) {
        throw std::runtime_error("Sordin did not end well: " + contentsOf(log));
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fprintf(stderr, "usage: sordin-demo SORDIN BROADCAST LABELS\n");
        return misused;
    }
    try {
        demonstrate(argv[1], argv[2], argv[3]);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "sordin-demo: %s\n", error.what());
        return failed;
    }
    return 0;
}
