// SPDX-License-Identifier: MIT
#include "rig/private_audio_server.h"

#include <nlohmann/json.hpp>

#include <filesystem>
#include <list>
#include <utility>

namespace sordin {
namespace {

using nlohmann::json;
using namespace std::chrono_literals;

/// Returns all objects of the server; an empty list if there is no server. pw-dump can hang if an object
/// disappears while it lists them; it is then run again.
json dump() {
    constexpr int attempts = 3;
    for (int i = 0; i < attempts; ++i) {
        const auto begun = std::chrono::steady_clock::now();
        const auto text = outputOf({"pw-dump", "--no-colors"}, "/dev/null", 3s);
        if (text || std::chrono::steady_clock::now() - begun < 3s) {
            json objects = json::parse(text.value_or("[]"), nullptr, false);
            return objects.is_array() ? objects : json::array();
        }
    }
    return json::array();
}

/// Returns `null` if the value does not exist, like all functions below.
json at(const json& value, const char* pointer) {
    const json::json_pointer path(pointer);
    return value.contains(path) ? value.at(path) : json();
}

json nodeOf(const json& objects, const std::string& name) {
    for (const json& object : objects) {
        if (at(object, "/type") == "PipeWire:Interface:Node" && at(object, "/info/props/node.name") == name) {
            return object;
        }
    }
    return {};
}

/// Returns the properties that a mixer shows: those of the active route of a card, otherwise those of the
/// node.
json volumeProperties(const std::string& sink) {
    const json objects = dump();
    const json node = nodeOf(objects, sink);
    const json device = at(node, "/info/props/device.id");
    const json cardDevice = at(node, "/info/props/card.profile.device");
    if (device.is_null() || cardDevice.is_null()) {
        return at(node, "/info/params/Props/0");
    }
    for (const json& object : objects) {
        if (at(object, "/id") == device) {
            for (const json& route : at(object, "/info/params/Route")) {
                if (at(route, "/device") == cardDevice) {
                    return at(route, "/props");
                }
            }
        }
    }
    return {};
}

json defaultMetadata(const std::string& key) {
    for (const json& object : dump()) {
        if (at(object, "/props/metadata.name") == "default") {
            for (const json& entry : at(object, "/metadata")) {
                if (at(entry, "/subject") == 0 && at(entry, "/key") == key) {
                    return at(entry, "/value");
                }
            }
        }
    }
    return {};
}

std::string textOf(const json& value) {
    return value.is_string() ? value.get<std::string>() : "";
}

}  // namespace

PrivateAudioServer::PrivateAudioServer(AudioServerOptions options) : AudioServer(std::move(options)) {}

PrivateAudioServer::~PrivateAudioServer() {
    stop();
}

void PrivateAudioServer::start() {
    stop();
    writeConfiguration();
    const auto started = [this](std::optional<ChildProcess>& process, const char* program) {
        process.emplace(std::vector<std::string>{program}, ChildOptions{.log = folder() / "log" / program});
    };
    started(pipewire_, "pipewire");
    wait("PipeWire", [this] { return exists(folder() / "run/pipewire-0"); });
    started(sessionManager_, "wireplumber");
    if (options().pulse) {
        started(pulse_, "pipewire-pulse");
    }
    wait("audio server", [this] { return ready(); });
    runOnce(options().sinks);
}

void PrivateAudioServer::stop() {
    pulse_.reset();
    sessionManager_.reset();
    pipewire_.reset();
}

void PrivateAudioServer::kill() {
    for (auto* process : {&pipewire_, &sessionManager_, &pulse_}) {
        if (*process) {
            (*process)->kill(SIGKILL);
        }
    }
    stop();
}

void PrivateAudioServer::hang() {
    pipewire_->kill(SIGSTOP);
}

void PrivateAudioServer::goOn() {
    pipewire_->kill(SIGCONT);
}

std::string PrivateAudioServer::defaultSink() const {
    return textOf(at(defaultMetadata("default.audio.sink"), "/name"));
}

void PrivateAudioServer::setDefaultSink(const std::string& sink) {
    run({"pw-metadata", "0", "default.configured.audio.sink", json{{"name", sink}}.dump(),
         "Spa:String:JSON"});
    wait("default sink " + sink, [&] { return defaultSink() == sink; });
}

std::vector<float> PrivateAudioServer::volume(const std::string& sink) const {
    const json volumes = at(volumeProperties(sink), "/channelVolumes");
    return volumes.is_array() ? volumes.get<std::vector<float>>() : std::vector<float>{};
}

bool PrivateAudioServer::muted(const std::string& sink) const {
    return at(volumeProperties(sink), "/mute") == true;
}

std::string PrivateAudioServer::nodeState(const std::string& node) const {
    return textOf(at(nodeOf(dump(), node), "/info/state"));
}

std::optional<int> PrivateAudioServer::nodeId(const std::string& node) const {
    const json id = at(nodeOf(dump(), node), "/id");
    return id.is_number() ? std::optional(id.get<int>()) : std::nullopt;
}

void PrivateAudioServer::createSink(const std::string& sink) {
    run({"pw-cli", "create-node", "adapter", sinkProperties(sink, 500)});
    wait("sink " + sink, [&] { return usable(sink); });
    runOnce({sink});
}

void PrivateAudioServer::destroySink(const std::string& sink) {
    if (const auto id = nodeId(sink)) {
        run({"pw-cli", "destroy", std::to_string(*id)});
    }
    wait("end of sink " + sink, [&] { return !nodeId(sink) && defaultSink() != sink; });
}

void PrivateAudioServer::writeConfiguration() {
    remove_all(folder() / "run");  // a killed server leaves its sockets behind
    for (const char* name : {"run/pulse", "home", "cache", "data", "state", "log",
                             "config/pipewire/pipewire.conf.d", "config/wireplumber/main.lua.d",
                             "config/wireplumber/bluetooth.lua.d", "config/wireplumber/wireplumber.conf.d"}) {
        create_directories(folder() / name);
    }
    permissions(folder() / "run", std::filesystem::perms::owner_all);
    std::string sinks;
    int priority = 2000;
    for (const std::string& sink : options().sinks) {
        sinks += "  { factory = adapter args = " + sinkProperties(sink, priority--) + " }\n";
    }
    writeText(folder() / "config/pipewire/pipewire.conf.d/sinks.conf",
              "context.objects = [\n" + sinks + "]\n");
    // WirePlumber 0.4 reads Lua, 0.5 the other format.
    writeText(folder() / "config/wireplumber/main.lua.d/51-test.lua",
              "alsa_monitor.enabled = false\n"
              "v4l2_monitor.enabled = false\n"
              "libcamera_monitor.enabled = false\n"
              "default_access.properties[\"enable-flatpak-portal\"] = false\n");
    writeText(folder() / "config/wireplumber/bluetooth.lua.d/51-test.lua",
              "bluez_monitor.enabled = false\n"
              "bluez_midi_monitor = { enabled = false }\n");
    writeText(folder() / "config/wireplumber/wireplumber.conf.d/51-test.conf",
              "wireplumber.profiles = { main = { hardware.audio = disabled, hardware.bluetooth = disabled,\n"
              "  hardware.video-capture = disabled, script.client.access-portal = disabled } }\n");
}

void PrivateAudioServer::runOnce(const std::vector<std::string>& sinks) {
    // An AU file: 16 bits, 48 kHz, two channels, a hundredth of a second.
    using namespace std::string_literals;
    writeText(folder() / "silence.au",
              ".snd\0\0\0\x18\xff\xff\xff\xff\0\0\0\x03\0\0\xbb\x80\0\0\0\x02"s + std::string(1920, '\0'));
    std::list<ChildProcess> players;
    for (const std::string& sink : sinks) {
        players.emplace_back(std::vector<std::string>{"pw-play", "--target", sink, folder() / "silence.au"},
                             ChildOptions{.log = folder() / "log/commands"});
    }
    for (ChildProcess& player : players) {
        wait("end of silence", [&] { return !player.running(); });
    }
}

std::string PrivateAudioServer::sinkProperties(const std::string& sink, int priority) const {
    return json{{"factory.name", "support.null-audio-sink"},
                {"node.name", sink},
                {"node.description", sink},
                {"media.class", "Audio/Sink"},
                {"object.linger", true},
                {"audio.rate", 48000},
                {"audio.position", "[ FL FR ]"},
                {"monitor.channel-volumes", options().monitorVolumes},
                {"priority.session", priority},
                {"priority.driver", priority}}
        .dump();
}

bool PrivateAudioServer::ready() const {
    if (options().pulse && !outputOf({"pactl", "info"}, "/dev/null")) {
        return false;
    }
    for (const std::string& sink : options().sinks) {
        if (!usable(sink)) {
            return false;
        }
    }
    if (options().sinks.empty() && !options().pulse) {
        // The metadata object exists but is empty, and pw-dump omits empty metadata.
        const auto found = outputOf({"pw-metadata", "0", "default.audio.sink"}, "/dev/null");
        return found.value_or("").starts_with("Found");
    }
    return !defaultSink().empty();
}

bool PrivateAudioServer::usable(const std::string& sink) const {
    const json ports = at(nodeOf(dump(), sink), "/info/n-input-ports");
    return ports.is_number() && ports > 0;
}

void PrivateAudioServer::wait(const std::string& what, const std::function<bool()>& condition) {
    std::vector<ChildProcess*> processes;
    for (auto* process : {&pipewire_, &sessionManager_, &pulse_}) {
        if (*process) {
            processes.push_back(&**process);
        }
    }
    AudioServer::wait(what, processes, condition);
}

}  // namespace sordin
