// SPDX-License-Identifier: MIT
// Cost of capture and volume writes on a private audio server: CPU seconds and wake-ups of this process and
// of the server.
//   sordin_audio_bench [SECONDS [pulseaudio]]   seconds per measurement (default 30), and which server
#include "platform/linux/audio/linux_audio.h"
#include "platform/loopback_capture.h"
#include "process_use.h"
#include "rig/private_audio_server.h"
#include "rig/private_pulseaudio.h"
#include "support/asio_serial_queue.h"

#include <cstdlib>
#include <filesystem>
#include <future>
#include <iostream>
#include <string>
#include <thread>

namespace {

using namespace sordin;

std::string serverProcess(const std::string& command) {
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        const auto environment = contentsOf(entry.path() / "environ");
        if (contentsOf(entry.path() / "comm") == command + "\n" &&
            environment.find(std::getenv("XDG_RUNTIME_DIR")) != std::string::npos) {
            return entry.path().filename();
        }
    }
    throw std::runtime_error("the audio server is not running");
}

template <class Work>
void measure(const std::string& what, const std::string& serverCommand, Work work) {
    const auto server = serverProcess(serverCommand);
    const ProcessUse ours = useOf("self");
    const ProcessUse theirs = useOf(server);
    const auto start = std::chrono::steady_clock::now();
    work();
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
    const auto print = [&](const std::string& who, const ProcessUse& before, const ProcessUse& after) {
        std::cout << "  " << who << ": " << (after.cpuSeconds - before.cpuSeconds) * 30 / time.count()
                  << " CPU s in 30 s, " << (after.wakeUps - before.wakeUps) / time.count()
                  << " wake-ups a second\n";
    };
    std::cout << what << '\n';
    print("Sordin", ours, useOf("self"));
    print("server", theirs, useOf(server));
}

}  // namespace

int main(int argc, char** argv) {
    const auto seconds = std::chrono::duration<double>(argc > 1 ? std::atof(argv[1]) : 30);
    const auto wait = [seconds] { std::this_thread::sleep_for(seconds); };
    const bool pulse = argc > 2 && std::string(argv[2]) == "pulseaudio";
    const std::string command = pulse ? "pulseaudio" : "pipewire";
    std::unique_ptr<AudioServer> server;
    if (pulse) {
        server = std::make_unique<PrivatePulseAudio>();
    } else {
        server = std::make_unique<PrivateAudioServer>();
    }
    server->start();
    const LinuxAudio audio;
    AudioObjects& objects = *audio.objects();
    const auto queue = std::make_shared<AsioSerialQueue>("sordin.audio");
    LoopbackCapture capture(std::make_shared<AsioSerialQueue>("sordin.capture"), audio.loopbackSource());
    std::promise<void> running;
    capture.start(
        queue, [](const CapturedAudio&) {}, [&](const auto&) { running.set_value(); });
    running.get_future().wait();

    ChildProcess player({pulse ? SORDIN_PULSE_TONE_PLAYER : SORDIN_TONE_PLAYER, "440", "0.5"},
                        {.readOutput = true, .writeInput = true});
    player.readLine(std::chrono::seconds(20));
    measure("listening to one player", command, wait);

    const auto device =
        read<std::uint32_t>(objects, systemAudioObject, audio_property::defaultOutputDevice).value_or(0);
    measure("listening, with 50 volume writes a second", command, [&] {
        const auto steps = static_cast<int>(seconds.count() * 50);
        for (int i = 0; i < steps; ++i) {
            objects.set(device, audio_property::volume(0), static_cast<float>(i % 50) / 50);
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
    });
    player.closeInput();
    player.wait(std::chrono::seconds(20));
    while (server->sinkState("test-sink-A") != "suspended") {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    measure("listening while nothing plays", command, wait);
    return 0;
}
