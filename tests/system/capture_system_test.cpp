// SPDX-License-Identifier: MIT
#include "platform/audio_process_inspector.h"
#include "platform/linux/desktop/linux_process_directory.h"
#include "platform/linux/pipewire/audio_objects.h"
#include "rig/private_audio_server.h"
#include "system/ear.h"
#include "system/private_pulseaudio.h"
#include "system/tone_file.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <pulse/simple.h>

namespace sordin {
namespace {

using namespace std::chrono_literals;
using pipewire::PipeWireAudioObjects;
using pipewire::PipeWireLoopbackSource;
using pipewire::Session;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto amplitude = 0.5;
const double fullLevel = amplitude / std::sqrt(2.0);

/// A native player of a tone; its arguments as those of tone_player.
class Player {
public:
    explicit Player(const std::vector<std::string>& properties = {}, const std::string& frequency = "440")
        : process_(arguments(properties, frequency), {.readOutput = true, .writeInput = true}) {
        EXPECT_EQ(process_.readLine(Ear::deadline), "streaming");
    }
    void pause() { process_.writeLine("pause"); }
    void play() { process_.writeLine("play"); }
    [[nodiscard]] pid_t pid() const { return process_.pid(); }

private:
    static std::vector<std::string> arguments(const std::vector<std::string>& properties,
                                              const std::string& frequency) {
        std::vector<std::string> result{SORDIN_TONE_PLAYER, frequency, std::to_string(amplitude)};
        result.insert(result.end(), properties.begin(), properties.end());
        return result;
    }
    ChildProcess process_;
};

class CaptureSystemTest : public testing::Test {
protected:
    void begin(const AudioServerOptions& options = {}) {
        server.emplace(options);
        server->start();
        listen();
    }
    void listen() {
        session = std::make_shared<Session>();
        ear.emplace(session);
    }

    std::optional<PrivateAudioServer> server;
    std::shared_ptr<Session> session;
    std::optional<Ear> ear;
};

class CaptureVolumeTest : public CaptureSystemTest, public testing::WithParamInterface<bool> {};
INSTANTIATE_TEST_SUITE_P(MonitorVolumes, CaptureVolumeTest, testing::Bool());

TEST_P(CaptureVolumeTest, HearsAtFullLevelWhateverTheVolumeOfTheDevice) {
    begin({.monitorVolumes = GetParam()});
    const Player player;
    ASSERT_EQ(ear->start(), "");
    for (const int percent : {100, 50, 0}) {
        server->setVolume("test-sink-A", {percent});
        const double factor = std::pow(percent / 100.0, 3);
        ASSERT_TRUE(waitUntil(
            [&] {
                return std::fabs(static_cast<double>(server->volume("test-sink-A").at(0)) - factor) < 1e-3;
            },
            Ear::deadline));
        ear->forget();
        EXPECT_TRUE(ear->hears(fullLevel)) << percent << ": " << ear->level();
    }
    server->setMute("test-sink-A", true);
    ASSERT_TRUE(waitUntil([&] { return server->muted("test-sink-A"); }, Ear::deadline));
    ear->forget();
    EXPECT_TRUE(ear->hears(fullLevel)) << ear->level();
    EXPECT_TRUE(ear->keepsHearing(fullLevel, 3));  // without a gap
}

TEST_F(CaptureSystemTest, HearsNativeAndPulseAudioPlayersOfAllSinksAndOfAnyChannels) {
    begin();
    ASSERT_EQ(ear->start(), "");
    const auto file = server->folder() / "tone.wav";
    writeToneFile(file, 60, 1000, amplitude);
    {
        const Player native({"target.object=test-sink-B"});
        ChildProcess pulse({"paplay", "--device=test-sink-A", file});
        const auto both = [&] {
            return std::fabs(ear->tone(440) - amplitude) < 0.01 &&
                   std::fabs(ear->tone(1000) - amplitude) < 0.01;
        };
        EXPECT_TRUE(waitUntil(both, Ear::deadline)) << ear->tone(440) << " " << ear->tone(1000);
    }
    EXPECT_TRUE(ear->hears(0));
    {
        const Player mono({"channels=1"});
        EXPECT_TRUE(ear->hears(fullLevel)) << ear->level();
    }
    const Player left({"left-only"});
    EXPECT_TRUE(ear->hears(fullLevel / 2)) << ear->level();  // the mean of both channels
}

TEST_F(CaptureSystemTest, NeverHearsItself) {
    begin();
    ASSERT_EQ(ear->start(), "");
    const pa_sample_spec format{PA_SAMPLE_FLOAT32NE, 48'000, 2};
    pa_simple* own = pa_simple_new(nullptr, "test", PA_STREAM_PLAYBACK, nullptr, "own", &format, nullptr,
                                   nullptr, nullptr);
    ASSERT_NE(own, nullptr);
    const std::vector<float> loud(48'000, 0.9F);  // half a second
    for (int i = 0; i < 4; ++i) {
        ASSERT_EQ(pa_simple_write(own, loud.data(), loud.size() * sizeof(float), nullptr), 0);
    }
    EXPECT_EQ(server->nodeState("test-sink-A"), "running");
    EXPECT_TRUE(ear->keepsHearing(0, 1));
    const Player other;  // and while another is heard
    ASSERT_EQ(pa_simple_write(own, loud.data(), loud.size() * sizeof(float), nullptr), 0);
    EXPECT_TRUE(ear->hears(fullLevel)) << ear->level();
    pa_simple_free(own);
}

TEST_F(CaptureSystemTest, FollowsPlayersAndSinksAsTheyComeAndGo) {
    begin();
    ASSERT_EQ(ear->start(), "");
    EXPECT_TRUE(ear->hears(0));  // zeros while nothing plays
    {
        Player player;
        EXPECT_TRUE(ear->hears(fullLevel));
        server->setDefaultSink("test-sink-B");
        EXPECT_TRUE(ear->keepsHearing(fullLevel, 1)) << "after the default sink changed";
        server->destroySink("test-sink-B");
        EXPECT_TRUE(ear->hears(fullLevel)) << "after its sink was destroyed";
        player.pause();
        EXPECT_TRUE(ear->hears(0)) << "while paused";
        player.play();
        EXPECT_TRUE(ear->hears(fullLevel)) << "playing again";
    }
    EXPECT_TRUE(ear->hears(0)) << "after it ended";
    ear->stop();
    const auto frames = ear->heardFrames();
    ASSERT_EQ(ear->start(), "");
    const Player next;
    EXPECT_TRUE(ear->hears(fullLevel)) << "started again";
    EXPECT_GT(ear->heardFrames(), frames);
    EXPECT_THAT(ear->losses(), IsEmpty());
}

TEST_F(CaptureSystemTest, AmongHundredsOfStreamsThoseThatPlayAreHeard) {
    begin();
    const Player first;
    ASSERT_EQ(ear->start(), "");
    ASSERT_TRUE(ear->hears(fullLevel));
    const auto openFiles = [] {
        const std::filesystem::directory_iterator files("/proc/self/fd");
        return std::distance(std::filesystem::begin(files), std::filesystem::end(files));
    };
    const auto before = openFiles();
    const auto crowdIs = [this](std::size_t size) {
        const auto lock = session->lock();
        const auto& nodes = session->connection()->graph().nodes;
        return static_cast<std::size_t>(std::count_if(nodes.begin(), nodes.end(), [](const auto& entry) {
                   return entry.second.name == "crowd" && entry.second.described;
               })) == size;
    };
    constexpr std::size_t size = 200;  // with many more the server needs minutes
    {
        ChildProcess crowd({SORDIN_STREAM_CROWD, std::to_string(size)}, {.writeInput = true});
        ASSERT_TRUE(waitUntil([&] { return crowdIs(size); }, 60s));
        EXPECT_TRUE(session->flush(Ear::deadline)) << "the connection still answers";
        ear->forget();
        EXPECT_TRUE(ear->hears(fullLevel));
    }
    ASSERT_TRUE(waitUntil([&] { return crowdIs(0); }, 60s));
    ear->forget();
    EXPECT_TRUE(ear->hears(fullLevel));
    EXPECT_TRUE(waitUntil([&] { return openFiles() <= before; }, Ear::deadline)) << openFiles() << before;
    EXPECT_THAT(ear->losses(), IsEmpty());
}

TEST_F(CaptureSystemTest, LoopbacksAndRemappedSinksAreHeardOnce) {
    begin();
    ASSERT_TRUE(outputOf({"pactl", "load-module", "module-loopback", "source=test-sink-A.monitor",
                          "sink=test-sink-B", "latency_msec=100"}));
    ASSERT_TRUE(
        outputOf({"pactl", "load-module", "module-remap-sink", "sink_name=remapped", "master=test-sink-A"}));
    ASSERT_EQ(ear->start(), "");
    {
        const Player direct({"target.object=test-sink-A"});
        EXPECT_TRUE(ear->hears(fullLevel)) << ear->level();
        EXPECT_TRUE(ear->keepsHearing(fullLevel, 1.5));
    }
    EXPECT_TRUE(ear->hears(0));
    const Player remapped({"target.object=remapped"});
    EXPECT_TRUE(ear->hears(fullLevel)) << ear->level();
    EXPECT_TRUE(ear->keepsHearing(fullLevel, 1.5));
}

TEST_F(CaptureSystemTest, TheDeviceSleepsWhileNothingPlays) {
    begin();
    ASSERT_EQ(ear->start(), "");
    {
        const Player player;
        EXPECT_TRUE(ear->hears(fullLevel));
    }
    EXPECT_TRUE(waitUntil([&] { return server->nodeState("test-sink-A") == "suspended"; }, 60s));
    EXPECT_NE(server->nodeState("sordin"), "running");
    EXPECT_EQ(outputOf({"pactl", "list", "short", "source-outputs"}), "");  // nor is it shown as recording
    EXPECT_TRUE(ear->keepsHearing(0, 1));
}

TEST_F(CaptureSystemTest, AServerThatDiesIsToldOnceAndHeardAgainWhenItIsBack) {
    server.emplace();
    listen();
    std::future<std::string> early = std::async(std::launch::async, [&] { return ear->start(); });
    server->start();  // while the start waits for it
    EXPECT_EQ(early.get(), "");
    for (int round = 0; round < 3; ++round) {
        {
            const Player player;
            EXPECT_TRUE(ear->hears(fullLevel)) << round;
            server->kill();
        }
        ASSERT_TRUE(waitUntil([&] { return !ear->losses().empty(); }, Ear::deadline));
        EXPECT_THAT(ear->losses(), ElementsAre("The connection to the PipeWire audio server was lost."));
        ear.reset();
        ear.emplace(session);  // the session is the same
        server->start();
        ear->forget();
        EXPECT_EQ(ear->start(), "");
    }
}

TEST_F(CaptureSystemTest, AServerThatHangsIsToldAndSteadySoundIsNeverTakenForThat) {
    begin();
    const Player player;
    ASSERT_EQ(ear->start(), "");
    EXPECT_TRUE(ear->hears(fullLevel));
    EXPECT_TRUE(ear->keepsHearing(fullLevel, 8));  // longer than silence is taken for sound
    EXPECT_THAT(ear->losses(), IsEmpty());
    server->hang();
    ASSERT_TRUE(waitUntil([&] { return !ear->losses().empty(); }, 60s));
    EXPECT_THAT(ear->losses(),
                ElementsAre("The PipeWire audio server ended the capture (no sound arrives)."));
    server->goOn();
    EXPECT_EQ(ear->start(), "");
    EXPECT_TRUE(ear->hears(fullLevel));
}

TEST_F(CaptureSystemTest, SaysWhatIsMissing) {
    server.emplace(AudioServerOptions{.sinks = {}, .pulse = false});
    session = std::make_shared<Session>();
    PipeWireLoopbackSource source(session, pipewire::pulseSocket());
    const auto obstacle = [&] {
        const auto found = source.obstacle();
        return found && found->passing ? found->failure.description : "";
    };
    EXPECT_EQ(obstacle(), "Cannot reach the PipeWire audio server.");
    server->start();  // for video only
    EXPECT_TRUE(waitUntil([&] { return obstacle() == "The PipeWire audio server has no audio output."; },
                          Ear::deadline))
        << obstacle();
    server->createSink("test-sink-C");
    EXPECT_TRUE(waitUntil([&] { return !source.obstacle(); }, Ear::deadline)) << obstacle();
}

TEST_F(CaptureSystemTest, AnotherServerOfSoundBesidePipeWireIsNoticed) {
    begin({.pulse = false});  // PipeWire for something else, as sharing screens
    EXPECT_EQ(ear->start(), "");
    ear->stop();
    const PrivatePulseAudio other(server->folder() / "log/pulseaudio");
    EXPECT_EQ(ear->start(), "The sound of this computer is played by PulseAudio, not by PipeWire.");
}

TEST_F(CaptureSystemTest, NamesWhoPlays) {
    begin();
    PipeWireAudioObjects objects(session);
    const LinuxProcessDirectory directory;
    const AudioProcessInspector inspector(objects, directory);
    const auto playing = [&](const std::vector<std::string>& names) {
        return waitUntil([&] { return inspector.activeOutputApps() == names; }, Ear::deadline);
    };
    EXPECT_TRUE(playing({}));
    {
        Player player;
        EXPECT_TRUE(playing({"tone_player"}));
        EXPECT_EQ(inspector.likelySource(), "tone_player");
        const auto file = server->folder() / "tone.wav";
        writeToneFile(file, 60, 1000, amplitude);
        ChildProcess pulse({"paplay", file});
        EXPECT_TRUE(playing({"tone_player", "pacat"}));
        player.pause();
        EXPECT_TRUE(playing({"pacat"}));
    }
    EXPECT_TRUE(playing({}));
    EXPECT_EQ(inspector.likelySource(), "Unknown");
}

}  // namespace
}  // namespace sordin
