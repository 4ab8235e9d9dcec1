// SPDX-License-Identifier: MIT
#include "rig/private_pulseaudio.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <stdexcept>
#include <utility>

namespace sordin {
namespace {

using nlohmann::json;

/// Returns the folder in usr/lib that contains `what`.
std::filesystem::path folderWith(const std::string& what) {
    const std::filesystem::path libraries = SORDIN_PULSEAUDIO "/usr/lib";
    std::error_code missing;
    for (const auto& entry : std::filesystem::directory_iterator(libraries, missing)) {
        if (std::filesystem::exists(entry.path() / what)) {
            return entry.path();
        }
    }
    throw std::runtime_error("tools/dev/unpack-pulseaudio has not run");
}

std::string modules() {
    return folderWith("modules") / "modules";
}

std::string libraries() {
    const auto folder = folderWith("pulseaudio");
    return "LD_LIBRARY_PATH=" + folder.string() + ":" + (folder / "pulseaudio").string() + ":" + modules();
}

/// Returns `null` if the sink does not exist.
json sinkInfo(const std::string& name) {
    const auto text = outputOf({"pactl", "--format=json", "list", "sinks"}, "/dev/null");
    const json sinks = json::parse(text.value_or("[]"), nullptr, false);
    for (const json& sink : sinks.is_array() ? sinks : json::array()) {
        if (sink["name"] == name) {
            return sink;
        }
    }
    return {};
}

}  // namespace

PrivatePulseAudio::PrivatePulseAudio(AudioServerOptions options) : AudioServer(std::move(options)) {}

PrivatePulseAudio::PrivatePulseAudio(AudioServerOptions options, const AudioServer& beside)
    : AudioServer(std::move(options), beside) {}

PrivatePulseAudio::~PrivatePulseAudio() {
    stop();
}

void PrivatePulseAudio::start() {
    stop();
    for (const char* name : {"run/pulse", "config", "home", "log"}) {
        std::filesystem::create_directories(folder() / name);
    }
    const auto socket = folder() / "run/pulse/native";
    std::filesystem::remove(socket);  // a killed server leaves its socket behind
    const std::string program = SORDIN_PULSEAUDIO "/usr/bin/pulseaudio";
    std::vector<std::string> arguments{
        program, "-n", "--daemonize=no", "--use-pid-file=no", "--exit-idle-time=-1", "-p", modules()};
    const auto load = [&arguments](const std::string& module) {
        arguments.insert(arguments.end(), {"-L", module});
    };
    load("module-device-restore");
    load("module-native-protocol-unix auth-anonymous=1 socket=" + socket.string());
    for (const std::string& sink : options().sinks) {
        load("module-null-sink sink_name=" + sink);
    }
    load("module-always-sink");
    load("module-rescue-streams");
    load("module-suspend-on-idle timeout=2");
    process_.emplace(arguments,
                     ChildOptions{.environment = {libraries()}, .log = folder() / "log/pulseaudio"});
    wait("PulseAudio", [] { return outputOf({"pactl", "info"}, "/dev/null").has_value(); });
    if (!options().sinks.empty()) {
        setDefaultSink(options().sinks.front());
    }
}

void PrivatePulseAudio::stop() {
    process_.reset();
}

void PrivatePulseAudio::kill() {
    if (process_) {
        process_->kill(SIGKILL);
    }
    stop();
}

void PrivatePulseAudio::hang() {
    process_->kill(SIGSTOP);
}

void PrivatePulseAudio::goOn() {
    process_->kill(SIGCONT);
}

std::string PrivatePulseAudio::defaultSink() const {
    std::string name = outputOf({"pactl", "get-default-sink"}, "/dev/null").value_or("");
    name.erase(std::remove(name.begin(), name.end(), '\n'), name.end());
    return name;
}

void PrivatePulseAudio::setDefaultSink(const std::string& sink) {
    run({"pactl", "set-default-sink", sink});
    wait("default sink " + sink, [&] { return defaultSink() == sink; });
}

std::vector<float> PrivatePulseAudio::volume(const std::string& sink) const {
    std::vector<float> channels;
    const json info = sinkInfo(sink);
    for (const json& channel : info.is_null() ? json::object() : info.at("volume")) {
        const float shown = channel.at("value").get<float>() / 65'536;  // PA_VOLUME_NORM
        channels.push_back(shown * shown * shown);
    }
    return channels;
}

bool PrivatePulseAudio::muted(const std::string& sink) const {
    const json info = sinkInfo(sink);
    return !info.is_null() && info.at("mute") == true;
}

std::string PrivatePulseAudio::sinkState(const std::string& sink) const {
    const json info = sinkInfo(sink);
    std::string state = info.is_null() ? "" : info.at("state").get<std::string>();
    std::transform(state.begin(), state.end(), state.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return state;
}

void PrivatePulseAudio::createSink(const std::string& sink) {
    run({"pactl", "load-module", "module-null-sink", "sink_name=" + sink});
    wait("sink " + sink, [&] { return !sinkInfo(sink).is_null(); });
}

void PrivatePulseAudio::destroySink(const std::string& sink) {
    const json info = sinkInfo(sink);
    if (!info.is_null()) {
        run({"pactl", "unload-module", info.at("owner_module").dump()});
    }
    wait("end of sink " + sink, [&] { return sinkInfo(sink).is_null() && defaultSink() != sink; });
}

void PrivatePulseAudio::wait(const std::string& what, const std::function<bool()>& condition) {
    AudioServer::wait(what, {&*process_}, condition);
}

}  // namespace sordin
