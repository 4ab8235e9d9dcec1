// SPDX-License-Identifier: MIT
#pragma once

#include "platform/audio_objects.h"
#include "replay/labels.h"
#include "rig/temporary_folder.h"
#include "rig/wait_until.h"
#include "server_kind.h"
#include "sink_volume.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace sordin {

/// Records all volumes of a device in order of time.
class VolumeRecorder {
public:
    struct Change {
        double time;  ///< seconds since the recorder was made
        float volume;
    };

    explicit VolumeRecorder(std::shared_ptr<AudioObjects> objects) : objects_(std::move(objects)) {}

    [[nodiscard]] double now() const {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
    }
    [[nodiscard]] std::vector<Change> changes() {
        const std::lock_guard lock(mutex_);
        return changes_;
    }

private:
    void record(const std::stop_token& stop) {
        while (!stop.stop_requested()) {
            const auto device =
                read<std::uint32_t>(*objects_, systemAudioObject, audio_property::defaultOutputDevice);
            const auto volume = read<float>(*objects_, device.value_or(0), audio_property::volume(0));
            if (volume) {
                const std::lock_guard lock(mutex_);
                if (changes_.empty() || changes_.back().volume != *volume) {
                    changes_.push_back({now(), *volume});
                }
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
    }

    const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    const std::shared_ptr<AudioObjects> objects_;
    std::mutex mutex_;
    std::vector<Change> changes_;
    std::jthread thread_{[this](const std::stop_token& stop) { record(stop); }};
};

/// The real program with a private audio server and a private home.
class SordinTest : public testing::Test {
protected:
    static constexpr std::chrono::seconds deadline{30};
    static constexpr auto sink = "test-sink-A";

    SordinTest() {
        std::filesystem::create_directories(home / "config/Sordin");
        writeText(home / "config/Sordin/defaults.json", R"({"onboarded": true, "sensitivity": 1.0})");
    }

    void beginServer(const AudioServerOptions& options = {}, ServerKind kind = ServerKind::pipeWire) {
        serverKind = kind;
        server = makeServer(kind, options);
        server->start();
    }

    /// The environment with a private home, and without a display unless the test adds one.
    [[nodiscard]] std::vector<std::string> environment() const {
        std::vector<std::string> all{"XDG_CONFIG_HOME=" + (home / "config").string(),
                                     "XDG_DATA_HOME=" + (home / "data").string(),
                                     "QT_LOGGING_RULES=sordin.*.info=true", "QT_FORCE_STDERR_LOGGING=1",
                                     "QT_MESSAGE_PATTERN=%{message}"};
        all.insert(all.end(), display.begin(), display.end());
        return all;
    }
    void startProgram(const std::vector<std::string>& arguments = {}) {
        program.reset();
        writeText(home / "log", "");
        std::vector<std::string> command{SORDIN_PROGRAM};
        command.insert(command.end(), arguments.begin(), arguments.end());
        program.emplace(command, ChildOptions{.environment = environment(), .log = home / "log"});
    }
    [[nodiscard]] std::string log() const { return contentsOf(home / "log"); }
    /// Whether the program prints this text after the first `before` bytes of its log.
    bool says(const std::string& text, std::size_t before = 0, std::chrono::milliseconds within = deadline) {
        return waitUntil([&] { return log().find(text, before) != std::string::npos; }, within);
    }
    void listen(const std::vector<std::string>& arguments = {}) {
        startProgram(arguments);
        ASSERT_TRUE(says("status: listening")) << log();
    }

    /// Plays a recording in the background until the end of the test.
    void play(const std::filesystem::path& recording) {
        const auto* const command = serverKind == ServerKind::pipeWire ? "pw-play" : "paplay";
        player.emplace(std::vector<std::string>{command, recording.string()},
                       ChildOptions{.log = home / "player"});
    }
    /// Listens and plays until an ad is faded.
    void enterAd() {
        listen();
        play(pieces() / "ads.wav");
        ASSERT_TRUE(says("an ad began")) << log();
        ASSERT_TRUE(becomes(0));
    }

    /// Whether the sink gets this volume on all channels.
    testing::AssertionResult becomes(float volume, std::chrono::milliseconds within = deadline) {
        return sinkBecomes(*server, sink, {volume, volume}, within) << "\n" << log();
    }
    /// Whether the sink gets its full volume and no restore is pending.
    testing::AssertionResult comesBackWhole(std::chrono::milliseconds within = deadline) {
        const auto full = becomes(1, within);
        const bool done = waitUntil([this] { return !recordIsThere(); }, within);
        return full && !done ? testing::AssertionFailure() << "the record is there" : full;
    }
    /// Whether the program ends properly on a signal.
    testing::AssertionResult endsBy(int signal) {
        program->kill(signal);
        const bool so = program->wait(deadline) == (signal == SIGKILL ? 128 + SIGKILL : 0);
        return (so ? testing::AssertionSuccess() : testing::AssertionFailure()) << signal << "\n" << log();
    }
    [[nodiscard]] bool recordIsThere() const {
        return std::filesystem::exists(home / "config/Sordin/pending-restore.json");
    }
    [[nodiscard]] nlohmann::json history() const {
        return nlohmann::json::parse(contentsOf(home / "data/Sordin/history.json"), nullptr, false);
    }

    /// Recordings made by the build: "ads.wav" repeats two commercials; "excerpt.wav" has programme before
    /// and after them; "talk.wav" has programme only.
    static std::filesystem::path pieces() { return SORDIN_BROADCAST; }
    /// The time of the commercials in the excerpt.
    static replay::Interval excerptAd() { return replay::readAdLabels(pieces() / "excerpt.txt").at(0); }

    TemporaryFolder home;
    std::vector<std::string> display{"DISPLAY=", "WAYLAND_DISPLAY="};
    ServerKind serverKind = ServerKind::pipeWire;
    std::unique_ptr<AudioServer> server;
    std::optional<ChildProcess> program;
    std::optional<ChildProcess> player;
};

/// True with ./test --long.
inline bool longSeries() {
    return std::getenv("SORDIN_LONG") != nullptr;
}
/// The number of repetitions of a series: `few`, or `all` with ./test --long.
inline int repetitions(int few, int all) {
    return longSeries() ? all : few;
}

}  // namespace sordin
