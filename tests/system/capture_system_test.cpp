// SPDX-License-Identifier: MIT
#include "platform/audio_process_inspector.h"
#include "platform/call_detector.h"
#include "platform/linux/desktop/linux_process_directory.h"
#include "system/ear.h"
#include "system/server_kind.h"
#include "system/sink_volume.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <pulse/simple.h>

namespace sordin {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto amplitude = 0.5;
const double fullLevel = amplitude / std::sqrt(2.0);

/// A native player of a tone, with the arguments of tone_player.
class Player {
public:
    explicit Player(ServerKind server, const std::vector<std::string>& properties = {})
        : process_(arguments(server, properties), {.readOutput = true, .writeInput = true}) {
        EXPECT_EQ(process_.readLine(Ear::deadline), "streaming");
    }
    void pause() { process_.writeLine("pause"); }
    void play() { process_.writeLine("play"); }

private:
    static std::vector<std::string> arguments(ServerKind server, const std::vector<std::string>& properties) {
        std::vector<std::string> result{server == ServerKind::pipeWire ? SORDIN_TONE_PLAYER
                                                                       : SORDIN_PULSE_TONE_PLAYER,
                                        "440", std::to_string(amplitude)};
        result.insert(result.end(), properties.begin(), properties.end());
        return result;
    }
    ChildProcess process_;
};

class CaptureSystemTest : public testing::TestWithParam<ServerKind> {
protected:
    void begin(const AudioServerOptions& options = {}) {
        server = makeServer(GetParam(), options);
        server->start();
        listen();
    }
    void listen() {
        audio.emplace();
        ear.emplace(*audio);
    }
    [[nodiscard]] static Player play(const std::vector<std::string>& properties = {}) {
        return Player(GetParam(), properties);
    }

    std::unique_ptr<AudioServer> server;
    std::optional<LinuxAudio> audio;
    std::optional<Ear> ear;
};
INSTANTIATE_TEST_SUITE_P(Capture, CaptureSystemTest, bothServers, serverName);

TEST_P(CaptureSystemTest, HearsAtFullLevelWhateverTheVolumeOfTheDevice) {
    begin({.monitorVolumes = true});  // the monitor then has the device's volume applied
    const Player player = play();
    ASSERT_EQ(ear->start(), "");
    for (const int percent : {100, 50, 0}) {
        server->setVolume("test-sink-A", {percent});
        const auto factor = static_cast<float>(std::pow(percent / 100.0, 3));
        ASSERT_TRUE(sinkBecomes(*server, "test-sink-A", {factor, factor}, Ear::deadline));
        ear->forget();
        EXPECT_TRUE(ear->hears(fullLevel)) << percent;
    }
    server->setMute("test-sink-A", true);
    ASSERT_TRUE(waitUntil([&] { return server->muted("test-sink-A"); }, Ear::deadline));
    ear->forget();
    EXPECT_TRUE(ear->hears(fullLevel));
    EXPECT_TRUE(ear->keepsHearing(fullLevel, 3));  // without gaps
}

TEST_P(CaptureSystemTest, HearsAndNamesNativeAndPulseAudioPlayersOfAllSinksAndOfAnyChannels) {
    begin();
    ASSERT_EQ(ear->start(), "");
    const LinuxProcessDirectory directory;
    const AudioProcessInspector inspector(*audio->objects(), directory);
    const std::string name = GetParam() == ServerKind::pipeWire ? "tone_player" : "pulse_tone_player";
    const auto playing = [&](const std::vector<std::string>& names) {
        return waitUntil([&] { return inspector.activeOutputApps() == names; }, Ear::deadline);
    };
    EXPECT_TRUE(playing({}));
    {
        Player native = play({"target=test-sink-B"});
        EXPECT_TRUE(playing({name}));
        EXPECT_EQ(inspector.likelySource(), name);
        const std::string file = server->folder() / "tone.wav";
        outputOf({"sox", "-n", "-r", "48000", "-c", "2", file, "synth", "60", "sine", "1000", "vol",
                  std::to_string(amplitude)});
        ChildProcess pulse({"paplay", "--device=test-sink-A", file});
        const auto both = [&] {
            return std::fabs(ear->tone(440) - amplitude) < 0.01 &&
                   std::fabs(ear->tone(1000) - amplitude) < 0.01;
        };
        EXPECT_TRUE(waitUntil(both, Ear::deadline)) << ear->tone(440) << " " << ear->tone(1000);
        EXPECT_TRUE(playing({name, "pacat"}));
        native.pause();
        EXPECT_TRUE(playing({"pacat"}));
    }
    EXPECT_TRUE(ear->hears(0));
    EXPECT_TRUE(playing({}));
    EXPECT_EQ(inspector.likelySource(), "Unknown");
    {
        const Player mono = play({"channels=1"});
        EXPECT_TRUE(ear->hears(fullLevel));
    }
    const Player left = play({"left-only"});
    EXPECT_TRUE(ear->hears(fullLevel / 2));  // the mean of the two channels
}

TEST_P(CaptureSystemTest, NeverHearsItself) {
    begin();
    ASSERT_EQ(ear->start(), "");
    const pa_sample_spec format{PA_SAMPLE_FLOAT32NE, 48'000, 2};
    pa_simple* own = pa_simple_new(nullptr, "test", PA_STREAM_PLAYBACK, nullptr, "own", &format, nullptr,
                                   nullptr, nullptr);
    ASSERT_NE(own, nullptr);
    const std::vector<float> loud(48'000, 0.9F);  // half a second of sound
    for (int i = 0; i < 4; ++i) {
        ASSERT_EQ(pa_simple_write(own, loud.data(), loud.size() * sizeof(float), nullptr), 0);
    }
    EXPECT_EQ(server->sinkState("test-sink-A"), "running");
    EXPECT_TRUE(ear->keepsHearing(0, 1));
    const Player other = play();  // also while another player is captured
    ASSERT_EQ(pa_simple_write(own, loud.data(), loud.size() * sizeof(float), nullptr), 0);
    EXPECT_TRUE(ear->hears(fullLevel));
    pa_simple_free(own);
}

TEST_P(CaptureSystemTest, FollowsPlayersAndSinksAsTheyComeAndGo) {
    begin();
    ASSERT_EQ(ear->start(), "");
    EXPECT_TRUE(ear->hears(0));  // zeros while nothing plays
    {
        Player player = play();
        EXPECT_TRUE(ear->hears(fullLevel));
        server->setDefaultSink("test-sink-B");
        // PipeWire 1.4 pauses a player for a cycle of 21 ms when it moves to another sink.
        EXPECT_TRUE(ear->keepsHearing(fullLevel, 1, 0.05)) << "after the default sink changed";
        server->destroySink("test-sink-B");
        EXPECT_TRUE(ear->hears(fullLevel)) << "after its sink was destroyed";
        player.pause();
        EXPECT_TRUE(ear->hears(0)) << "while paused";
        player.play();
        EXPECT_TRUE(ear->hears(fullLevel)) << "playing again";
    }
    EXPECT_TRUE(ear->hears(0)) << "after it ended";
    EXPECT_TRUE(waitUntil([&] { return server->sinkState("test-sink-A") == "suspended"; }, 60s))
        << "the device is suspended";
    EXPECT_EQ(outputOf({"pactl", "list", "short", "source-outputs"}),
              "");  // desktops do not show a recording program
    EXPECT_TRUE(ear->keepsHearing(0, 1));
    ear->stop();
    const auto frames = ear->heardFrames();
    ASSERT_EQ(ear->start(), "");
    const Player next = play();
    EXPECT_TRUE(ear->hears(fullLevel)) << "started again";
    EXPECT_GT(ear->heardFrames(), frames);
    EXPECT_THAT(ear->losses(), IsEmpty());
}

TEST_P(CaptureSystemTest, LoopbacksAndRemappedSinksAreHeardOnce) {
    begin();
    ASSERT_TRUE(outputOf({"pactl", "load-module", "module-loopback", "source=test-sink-A.monitor",
                          "sink=test-sink-B", "latency_msec=100"}));
    ASSERT_TRUE(
        outputOf({"pactl", "load-module", "module-remap-sink", "sink_name=remapped", "master=test-sink-A"}));
    ASSERT_EQ(ear->start(), "");
    for (const auto* target : {"target=test-sink-A", "target=remapped"}) {
        EXPECT_TRUE(ear->hears(0)) << "before " << target;
        const Player player = play({target});
        EXPECT_TRUE(ear->hears(fullLevel)) << target;
        EXPECT_TRUE(ear->keepsHearing(fullLevel, 1.5)) << target;
    }
}

TEST_P(CaptureSystemTest, CallsAreToldFromOtherSound) {
    begin();
    const bool onPipeWire = GetParam() == ServerKind::pipeWire;
    ASSERT_TRUE(onPipeWire
                    ? outputOf({"pactl", "load-module", "module-null-sink", "sink_name=microphone",
                                "media.class=Audio/Source/Virtual", "channel_map=mono"})
                    : outputOf({"pactl", "load-module", "module-null-source", "source_name=microphone"}));
    std::mutex mutex;
    std::vector<ApplicationStream> streams;
    audio->streams()->onChange([&](const auto& now) {
        const std::scoped_lock lock(mutex);
        streams = now;
    });
    const auto become = [&](std::size_t number, const std::optional<std::string>& caller) {
        std::string seen;
        const auto so = [&] {
            const std::scoped_lock lock(mutex);
            const auto call = callAmong(streams);
            seen = call ? "a call:" : "no call:";
            for (const ApplicationStream& stream : streams) {
                seen += " " + stream.name +
                        (stream.kind == ApplicationStream::Kind::records ? " records" : " plays");
            }
            return streams.size() == number && (call ? std::optional(call->name) : std::nullopt) == caller;
        };
        return (waitUntil(so, Ear::deadline) ? testing::AssertionSuccess() : testing::AssertionFailure())
               << seen;
    };
    const std::string name = onPipeWire ? "tone_player" : "pulse_tone_player";
    {
        const Player player = play();
        EXPECT_TRUE(become(1, {}));
        const ChildProcess recorder({"parec", "--device=microphone", "/dev/null"});
        EXPECT_TRUE(become(2, {})) << "the recorder belongs to another program";
    }
    {
        Player player = play({"record=microphone"});
        EXPECT_TRUE(become(2, name));
        player.pause();
        EXPECT_TRUE(become(1, {})) << "the program only records";
    }
    {
        const Player player = play({onPipeWire ? "role=Communication" : "role=phone"});
        EXPECT_TRUE(become(1, name));
    }
    // PulseAudio clients must give the same result on both servers.
    for (const auto& [argument, number, caller] : {std::tuple("role=phone", 1U, true),
                                                   {"record=microphone", 2U, true},
                                                   {"record=test-sink-A.monitor", 1U, false}}) {
        const Player player(ServerKind::pulseAudio, {argument});
        EXPECT_TRUE(become(number, caller ? std::optional("pulse_tone_player") : std::nullopt)) << argument;
    }
    ASSERT_TRUE(
        outputOf({"pactl", "load-module", "module-loopback", "source=microphone", "sink=test-sink-A"}));
    std::optional<ChildProcess> effects;
    if (onPipeWire) {
        effects.emplace(std::vector<std::string>{"pw-loopback", "-C", "microphone", "-P", "test-sink-A"});
    }
    ear.emplace(*audio);
    ASSERT_EQ(ear->start(), "");
    const Player player = play();  // captured, so this program has a recording stream
    EXPECT_TRUE(ear->hears(fullLevel));
    EXPECT_TRUE(become(1, {})) << "filters and this program are not reported";
    audio->streams()->onChange({});
}

TEST_P(CaptureSystemTest, AnApplicationThatIsLeftOutIsNotRecorded) {
    begin();
    ASSERT_EQ(ear->start(), "");
    const LinuxProcessDirectory directory;
    const AudioProcessInspector inspector(*audio->objects(), directory);
    const std::string name = GetParam() == ServerKind::pipeWire ? "tone_player" : "pulse_tone_player";
    const auto recorded = [] {  // the streams that this program records
        const auto recordings = GetParam() == ServerKind::pipeWire
                                    ? outputOf({"pw-link", "--links"}).value_or("sordin:")
                                    : outputOf({"pactl", "list", "source-outputs"}).value_or("Sordin");
        return recordings.find("sordin:") != std::string::npos ||
               recordings.find("Sordin") != std::string::npos;
    };
    const Player player = play();
    EXPECT_TRUE(ear->hears(fullLevel));
    EXPECT_TRUE(recorded());
    for (const LeftOut& what : {LeftOut{false, {"something-else", name}}, LeftOut{true, {}}}) {
        audio->streams()->leaveOut(what);
        EXPECT_TRUE(ear->hears(0));
        EXPECT_TRUE(waitUntil([&] { return !recorded(); }, Ear::deadline));
        EXPECT_THAT(inspector.activeOutputApps(), IsEmpty());
        ear->stop();
        ear->forget();
        ASSERT_EQ(ear->start(), "");
        {
            const Player later = play();
            EXPECT_TRUE(ear->keepsHearing(0, 1.5))
                << "a later stream of the application is not recorded either";
            EXPECT_FALSE(recorded());
        }
        audio->streams()->leaveOut({false, {"something-else"}});
        EXPECT_TRUE(ear->hears(fullLevel));
    }
}

TEST_P(CaptureSystemTest, AServerThatDiesIsToldOnceAndHeardAgainWhenItIsBack) {
    server = makeServer(GetParam());
    listen();
    std::future<std::string> early = std::async(std::launch::async, [&] { return ear->start(); });
    server->start();  // during the wait of the start
    EXPECT_EQ(early.get(), "");
    for (int round = 0; round < 3; ++round) {
        {
            const Player player = play();
            EXPECT_TRUE(ear->hears(fullLevel)) << round;
            server->kill();
        }
        ASSERT_TRUE(waitUntil([&] { return !ear->losses().empty(); }, Ear::deadline));
        EXPECT_THAT(ear->losses(),
                    ElementsAre("The connection to the " + nameOf(GetParam()) + " audio server was lost."));
        ear.reset();
        ear.emplace(*audio);  // with the same sessions
        server->start();
        ear->forget();
        EXPECT_EQ(ear->start(), "");
    }
}

TEST_P(CaptureSystemTest, AServerThatHangsIsToldAndSteadySoundIsNeverTakenForThat) {
    begin();
    const Player player = play();
    ASSERT_EQ(ear->start(), "");
    EXPECT_TRUE(ear->hears(fullLevel));
    EXPECT_TRUE(ear->keepsHearing(fullLevel, 8));  // longer than the limit for streams without data
    EXPECT_THAT(ear->losses(), IsEmpty());
    server->hang();
    ASSERT_TRUE(waitUntil([&] { return !ear->losses().empty(); }, 60s));
    EXPECT_THAT(ear->losses(), ElementsAre("The " + nameOf(GetParam()) +
                                           " audio server ended the capture (no sound arrives)."));
    server->goOn();
    EXPECT_EQ(ear->start(), "");
    EXPECT_TRUE(ear->hears(fullLevel));
}

TEST(CaptureChoiceTest, AmongHundredsOfStreamsThoseThatPlayAreHeard) {
    PrivateAudioServer server;
    server.start();
    const LinuxAudio audio;
    Ear ear(audio);
    pipewire::Session session;  // counts the nodes
    const Player first(ServerKind::pipeWire);
    ASSERT_EQ(ear.start(), "");
    ASSERT_TRUE(ear.hears(fullLevel));
    const auto openFiles = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    };
    const auto before = openFiles();
    const auto crowdIs = [&session](std::size_t size) {
        const auto lock = session.lock();
        const auto& nodes = session.connection()->graph().nodes;
        return static_cast<std::size_t>(std::count_if(nodes.begin(), nodes.end(), [](const auto& entry) {
                   return entry.second.name == "crowd" && entry.second.described;
               })) == size;
    };
    constexpr std::size_t size = 200;  // with many more the server takes minutes
    {
        ChildProcess crowd({SORDIN_STREAM_CROWD, std::to_string(size)}, {.writeInput = true});
        ASSERT_TRUE(waitUntil([&] { return crowdIs(size); }, 60s));
        AudioObjects& objects = *audio.objects();
        const auto device =
            read<std::uint32_t>(objects, systemAudioObject, audio_property::defaultOutputDevice);
        ASSERT_TRUE(objects.set(device.value_or(0), audio_property::volume(0), 1.0F));
        EXPECT_TRUE(objects.flush(Ear::deadline)) << "the connection must still work";
        ear.forget();
        EXPECT_TRUE(ear.hears(fullLevel));
    }
    ASSERT_TRUE(waitUntil([&] { return crowdIs(0); }, 60s));
    ear.forget();
    EXPECT_TRUE(ear.hears(fullLevel));
    EXPECT_TRUE(waitUntil([&] { return openFiles() <= before; }, Ear::deadline)) << openFiles() << before;
    EXPECT_THAT(ear.losses(), IsEmpty());
}

TEST(CaptureChoiceTest, SaysWhatIsMissing) {
    PrivateAudioServer server({.sinks = {}, .pulse = false});
    const LinuxAudio audio;
    const auto source = audio.loopbackSource();
    const auto obstacle = [&] {
        const auto found = source->obstacle();
        return found && found->passing ? found->failure.description : "";
    };
    EXPECT_EQ(obstacle(), "Cannot reach the PipeWire audio server.");
    server.start();  // without audio
    EXPECT_TRUE(waitUntil([&] { return obstacle() == "The PipeWire audio server has no audio output."; },
                          Ear::deadline))
        << obstacle();
    server.createSink("test-sink-C");
    EXPECT_TRUE(waitUntil([&] { return !source->obstacle(); }, Ear::deadline)) << obstacle();
}

TEST(CaptureChoiceTest, PulseAudioIsHeardWherePipeWiresOwnFilesAreMissing) {
    PrivatePulseAudio server;
    server.start();
    setenv("PIPEWIRE_CONFIG_DIR", server.folder().path().c_str(), 1);
    const LinuxAudio audio;
    Ear ear(audio);
    EXPECT_EQ(ear.start(), "");
    const Player player(ServerKind::pulseAudio);
    EXPECT_TRUE(ear.hears(fullLevel));
}

TEST(CaptureChoiceTest, TheServerIsHeardThatPlaysTheSound) {
    PrivateAudioServer pipeWire({.pulse = false});
    pipeWire.start();
    const LinuxAudio audio;
    Ear ear(audio);
    const auto device = [&] {
        const auto id =
            read<std::uint32_t>(*audio.objects(), systemAudioObject, audio_property::defaultOutputDevice);
        const auto record = audio.objects()->record(id.value_or(0));
        return record ? record->name : "";
    };
    {
        const Player player(ServerKind::pipeWire);
        EXPECT_EQ(ear.start(), "");
        EXPECT_TRUE(ear.hears(fullLevel));
        EXPECT_EQ(device(), "test-sink-A");
    }
    ear.stop();
    // On desktops with PulseAudio, PipeWire may run for other purposes, such as screen sharing.
    std::optional<PrivatePulseAudio> pulse(std::in_place, AudioServerOptions{.sinks = {"pulse-sink"}},
                                           pipeWire);
    pulse->start();
    EXPECT_EQ(ear.start(), "");
    {
        ear.forget();
        const Player player(ServerKind::pulseAudio);
        EXPECT_TRUE(ear.hears(fullLevel));
        EXPECT_EQ(device(), "pulse-sink");
    }
    pulse.reset();
    ASSERT_TRUE(waitUntil([&] { return !ear.losses().empty(); }, Ear::deadline));
    EXPECT_EQ(ear.start(), "");
    const Player player(ServerKind::pipeWire);
    EXPECT_TRUE(ear.hears(fullLevel));
    EXPECT_EQ(device(), "test-sink-A");
}

}  // namespace
}  // namespace sordin
