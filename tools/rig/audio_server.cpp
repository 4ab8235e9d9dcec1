// SPDX-License-Identifier: MIT
#include "rig/audio_server.h"

#include "rig/wait_until.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace sordin {
namespace {

/// Creates a folder and directs the whole process to it by environment variables.
std::shared_ptr<const TemporaryFolder> privateFolder() {
    auto folder = std::make_shared<const TemporaryFolder>();
    std::istringstream folders("HOME home XDG_RUNTIME_DIR run XDG_CONFIG_HOME config XDG_STATE_HOME state "
                               "XDG_CACHE_HOME cache XDG_DATA_HOME data PIPEWIRE_RUNTIME_DIR run "
                               "PULSE_RUNTIME_PATH run/pulse");
    for (std::string name, path; folders >> name >> path;) {
        setenv(name.c_str(), (*folder / path).c_str(), 1);
    }
    setenv("PULSE_SERVER", ("unix:" + (*folder / "run/pulse/native").string()).c_str(), 1);
    setenv("DBUS_SESSION_BUS_ADDRESS", "disabled:", 1);
    setenv("DBUS_SYSTEM_BUS_ADDRESS", "disabled:", 1);
    std::istringstream leftovers(
        "DISPLAY WAYLAND_DISPLAY PIPEWIRE_REMOTE PIPEWIRE_CORE PIPEWIRE_NODE PIPEWIRE_PROPS PIPEWIRE_LATENCY "
        "PIPEWIRE_RATE PIPEWIRE_QUANTUM PIPEWIRE_CONFIG_DIR PIPEWIRE_CONFIG_NAME PIPEWIRE_CONFIG_PREFIX "
        "WIREPLUMBER_CONFIG_DIR WIREPLUMBER_DATA_DIR PULSE_COOKIE PULSE_SINK PULSE_SOURCE PULSE_CLIENTCONFIG "
        "PULSE_PROP PULSE_LATENCY_MSEC");
    for (std::string name; leftovers >> name;) {
        unsetenv(name.c_str());
    }
    return folder;
}

}  // namespace

AudioServer::AudioServer(AudioServerOptions options)
    : options_(std::move(options)), folder_(privateFolder()) {}

AudioServer::AudioServer(AudioServerOptions options, const AudioServer& beside)
    : options_(std::move(options)), folder_(beside.folder_) {}

void AudioServer::setVolume(const std::string& sink, const std::vector<int>& percents) const {
    std::vector<std::string> command{"pactl", "set-sink-volume", sink};
    for (const int percent : percents) {
        command.push_back(std::to_string(percent) + "%");
    }
    run(command);
}

void AudioServer::setMute(const std::string& sink, bool mute) const {
    run({"pactl", "set-sink-mute", sink, mute ? "1" : "0"});
}

void AudioServer::run(const std::vector<std::string>& arguments) const {
    const auto log = folder() / "log/commands";
    if (!outputOf(arguments, log)) {
        throw std::runtime_error(arguments.front() + " failed: " + contentsOf(log));
    }
}

void AudioServer::wait(const std::string& what, const std::vector<ChildProcess*>& processes,
                       const std::function<bool()>& condition) const {
    bool allRun = true;
    const auto settled = [&] {
        allRun = std::all_of(processes.begin(), processes.end(),
                             [](ChildProcess* process) { return process->running(); });
        return !allRun || condition();
    };
    if (waitUntil(settled, std::chrono::seconds(20)) && allRun) {
        return;
    }
    std::string logs;
    for (const auto& file : std::filesystem::directory_iterator(folder() / "log")) {
        const std::string log = contentsOf(file.path());
        logs += "\n-- " + file.path().filename().string() + "\n" +
                log.substr(log.size() - std::min<std::size_t>(log.size(), 800));
    }
    throw std::runtime_error("timeout or failure while waiting for " + what + logs);
}

}  // namespace sordin
