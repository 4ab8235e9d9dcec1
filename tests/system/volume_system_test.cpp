// SPDX-License-Identifier: MIT
#include "platform/linux/audio/linux_audio.h"
#include "platform/linux/storage/file_user_defaults.h"
#include "rig/wait_until.h"
#include "server_kind.h"
#include "sink_volume.h"
#include "support/asio_serial_queue.h"
#include "volume/pending_restore.h"
#include "volume/volume_controller.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <atomic>
#include <cmath>
#include <future>

namespace sordin {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::FloatNear;
using testing::Pointwise;

constexpr auto deadline = 20s;
constexpr auto sinkA = "test-sink-A";
constexpr auto sinkB = "test-sink-B";

using Channels = std::vector<float>;

float cubed(double volume) {
    return static_cast<float>(volume * volume * volume);
}

/// A sound card of its own: "fake-sink" with the routes "fake-speaker" and "fake-headphones".
class Card {
public:
    struct Write {
        std::string route;
        Channels volumes;
        bool save;
    };

    /// Returns when it is the default. WirePlumber 0.4 now and then believes for ever that a new card has no
    /// route in use, so it is told.
    explicit Card(const AudioServer& server)
        : process_({SORDIN_FAKE_CARD}, {.readOutput = true, .writeInput = true}) {
        while (const auto line = process_.readLine(deadline)) {
            if (line->find("ready") != std::string::npos) {
                break;
            }
        }
        const auto isDefault = [&] { return server.defaultSink() == "fake-sink"; };
        EXPECT_TRUE(waitUntil(
            [&] {
                return isDefault() || (outputOf({"pw-metadata", "-n", "default", "0", "default.audio.sink",
                                                 R"({"name":"fake-sink"})", "Spa:String:JSON"}) &&
                                       isDefault());
            },
            deadline));
    }
    void say(const std::string& line) { process_.writeLine(line); }
    /// What the card is told, by whomever: "save" is whether the session manager is to remember it.
    std::optional<Write> nextWrite(std::chrono::milliseconds within = deadline) {
        const auto line = process_.readLine(within);
        if (!line) {
            return std::nullopt;
        }
        const auto json = nlohmann::json::parse(*line);
        return Write{json["route"], json["volumes"], json["save"]};
    }
    /// Whether it comes to be told this volume. The server is not asked: many questions confuse it.
    testing::AssertionResult isTold(const std::string& route, float volume) {
        const auto end = std::chrono::steady_clock::now() + deadline;
        std::optional<Write> last;
        while (std::chrono::steady_clock::now() < end) {
            if (const auto write = nextWrite(100ms)) {
                last = write;
                if (write->route == route && std::fabs(write->volumes.at(0) - volume) < 1e-4F) {
                    return testing::AssertionSuccess();
                }
            }
        }
        return testing::AssertionFailure() << (last ? last->route : "-") << " is told "
                                           << (last ? testing::PrintToString(last->volumes) : "nothing");
    }

private:
    ChildProcess process_;
};

class VolumeSystemTest : public testing::Test {
protected:
    void begin(ServerKind kind = ServerKind::pipeWire, const AudioServerOptions& options = {}) {
        server = makeServer(kind, options);
        server->start();
        startProgram();
        EXPECT_TRUE(audio->waitUntilKnown(deadline));
    }

    void startProgram() {
        audio.emplace();
        objects = audio->objects();
        queue = std::make_shared<AsioSerialQueue>("sordin.volume");
        controller = std::make_shared<VolumeController>(queue, objects, defaults);
        controller->recoverFromCrash();
    }

    /// The program ends without a word: nothing is restored.
    void crash() {
        controller.reset();
        queue.reset();
        objects.reset();
        audio.reset();
    }

    /// Waits until the program sees a sink as the default, and returns it.
    AudioObjectId defaultDevice(const std::string& name) {
        AudioObjectId device = 0;
        EXPECT_TRUE(waitUntil(
            [&] {
                device = read<std::uint32_t>(*objects, systemAudioObject, audio_property::defaultOutputDevice)
                             .value_or(0);
                const auto record = objects->record(device);
                return record && record->name == name;
            },
            deadline))
            << name;
        return device;
    }

    testing::AssertionResult becomes(const std::string& sink, const Channels& channels) {
        return sinkBecomes(*server, sink, channels, deadline);
    }
    bool recordIsGone() {
        return waitUntil([&] { return !defaults->number(PendingRestore::key); }, deadline);
    }
    static constexpr float usersVolume = 0.343F;  // 70 %

    /// Waits until a new card is the default, and sets its volume by its own keys.
    AudioObjectId useCard(Card& card) {
        const auto device = defaultDevice("fake-sink");
        EXPECT_TRUE(waitUntil([&] { return std::fabs(volumeOf(device) - 0.4F) < 1e-3F; }, deadline));
        card.say("volume 0.343 0.343");
        EXPECT_TRUE(waitUntil([&] { return std::fabs(volumeOf(device) - 0.7F) < 1e-3F; }, deadline));
        while (card.nextWrite(10ms)) {
        }
        return device;
    }
    float volumeOf(AudioObjectId device) {
        return read<float>(*objects, device, audio_property::volume(0)).value_or(-1);
    }

    std::unique_ptr<AudioServer> server;
    TemporaryFolder folder;
    std::shared_ptr<UserDefaults> defaults = std::make_shared<FileUserDefaults>(
        folder.path(), std::make_shared<AsioSerialQueue>("sordin.defaults"));
    std::optional<LinuxAudio> audio;
    std::shared_ptr<AudioObjects> objects;
    std::shared_ptr<SerialQueue> queue;
    std::shared_ptr<VolumeController> controller;
};

class VolumeOfServerTest : public VolumeSystemTest, public testing::WithParamInterface<ServerKind> {};
INSTANTIATE_TEST_SUITE_P(Volume, VolumeOfServerTest, bothServers, serverName);

TEST_P(VolumeOfServerTest, FadesAVirtualSinkAndBringsVolumeAndBalanceBack) {
    begin(GetParam());
    const auto device = defaultDevice(sinkA);
    for (const auto& percents : {std::vector<int>{80, 40}, {130, 65}, {0, 0}, {100, 100}}) {
        server->setVolume(sinkA, percents);
        const Channels before{cubed(percents[0] / 100.0), cubed(percents[1] / 100.0)};
        ASSERT_TRUE(becomes(sinkA, before));
        const float scalar = std::min(static_cast<float>(percents[0]) / 100, 1.0F);
        ASSERT_TRUE(waitUntil([&] { return std::fabs(volumeOf(device) - scalar) < 1e-3F; }, deadline));
        controller->duck(0, 0.15);
        EXPECT_TRUE(becomes(sinkA, {0, 0}));
        controller->restore(0.6);
        EXPECT_TRUE(becomes(sinkA, before)) << percents[0];
        EXPECT_TRUE(recordIsGone());
    }
    EXPECT_THAT(server->volume(sinkB), ElementsAre(1.0F, 1.0F));  // never touched
}

TEST_F(VolumeSystemTest, WritesTheRouteOfACardStepByStepWithoutHavingItRemembered) {
    begin();
    Card card(*server);
    useCard(card);
    const double before = std::cbrt(static_cast<double>(usersVolume));
    // Seven and thirty steps along the curve 3t^2 - 2t^3.
    const auto expectRamp = [&card](int steps, double from, double to) {
        for (int i = 1; i <= steps; ++i) {
            const double t = static_cast<double>(i) / steps;
            const auto write = card.nextWrite();
            ASSERT_TRUE(write);
            EXPECT_EQ(write->route, "fake-speaker");
            EXPECT_FALSE(write->save);
            EXPECT_THAT(write->volumes,
                        testing::Each(FloatNear(cubed(from + (to - from) * t * t * (3 - 2 * t)), 1e-5F)));
        }
    };
    controller->duck(0, 0.15);
    expectRamp(7, before, 0);
    controller->restore(0.6);
    expectRamp(30, 0, before);
    EXPECT_TRUE(recordIsGone());
}

TEST_F(VolumeSystemTest, HeadphonesPluggedInMeanwhileKeepTheirOwnVolume) {
    begin();
    Card card(*server);
    const auto speaker = useCard(card);
    controller->duck(0, 0.15);
    ASSERT_TRUE(card.isTold("fake-speaker", 0));
    card.say("route fake-headphones");
    AudioObjectId headphones = speaker;
    ASSERT_TRUE(waitUntil([&] { return (headphones = defaultDevice("fake-sink")) != speaker; }, deadline));
    EXPECT_FALSE(objects->present(speaker));
    ASSERT_TRUE(card.isTold("fake-headphones", 0.064F));  // by the session manager, as all new ones
    controller->restore(0.1);
    queue->sync([] {});
    while (const auto write = card.nextWrite(500ms)) {
        EXPECT_FALSE(write->route == "fake-headphones" && !write->save) << "one of ours";
    }
    EXPECT_TRUE(defaults->number(PendingRestore::key));  // the speaker has yet to get its volume
    card.say("route fake-speaker");
    EXPECT_TRUE(card.isTold("fake-speaker", usersVolume));
    EXPECT_TRUE(recordIsGone());
    EXPECT_EQ(defaultDevice("fake-sink"), speaker);
}

TEST_F(VolumeSystemTest, ACardFadedByAProgramThatDiedIsNotLeftDownByARestartedServer) {
    begin();
    {
        Card card(*server);
        defaultDevice("fake-sink");
        controller->duck(0, 0.15);
        ASSERT_TRUE(card.isTold("fake-speaker", 0));
        crash();
        server->kill();
    }
    server->start();
    Card card(*server);
    // What it was told first, though nothing of ours runs.
    EXPECT_TRUE(card.isTold("fake-speaker", 0.064F));
}

TEST_P(VolumeOfServerTest, TheSinkThatWasFadedIsRestoredWhateverTheDefaultIsNow) {
    begin(GetParam());
    server->setVolume(sinkA, {60});
    ASSERT_TRUE(becomes(sinkA, {0.216F, 0.216F}));
    defaultDevice(sinkA);
    controller->duck(0.5F, 0.15);
    ASSERT_TRUE(becomes(sinkA, {0.027F, 0.027F}));
    server->setDefaultSink(sinkB);
    defaultDevice(sinkB);
    controller->restore(0.6);
    EXPECT_TRUE(becomes(sinkA, {0.216F, 0.216F}));
    EXPECT_THAT(server->volume(sinkB), ElementsAre(1.0F, 1.0F));
}

TEST_F(VolumeSystemTest, EachChangeOfTheDefaultIsSeenThoughOthersConnectAllTheTime) {
    begin();
    std::atomic<bool> enough = false;
    const auto askAllTheTime = [&] {
        while (!enough) {
            outputOf({"pw-metadata", "0"}, "/dev/null");
        }
    };
    const auto one = std::async(std::launch::async, askAllTheTime);
    const auto two = std::async(std::launch::async, askAllTheTime);
    for (int i = 0; i < 20; ++i) {
        const auto& sink = i % 2 == 0 ? sinkB : sinkA;
        server->setDefaultSink(sink);
        defaultDevice(sink);
    }
    enough = true;
}

TEST_P(VolumeOfServerTest, AServerThatDiesWhileFadedGetsTheVolumeBackWhenItReturns) {
    begin(GetParam());
    server->setVolume(sinkA, {80, 40});
    const Channels before{0.512F, 0.064F};
    ASSERT_TRUE(becomes(sinkA, before));
    const auto saved = [&] {  // by PipeWire's session manager, which remembers virtual sinks at once
        const auto file = contentsOf(server->folder() / "state/wireplumber/restore-stream");
        return GetParam() != ServerKind::pipeWire ||
               file.find("A:channelVolumes=0.0;0.0") != std::string::npos;
    };
    const auto device = defaultDevice(sinkA);
    for (const bool restoredWhileAway : {true, false}) {
        controller->duck(0, 0.15);
        ASSERT_TRUE(becomes(sinkA, {0, 0}));
        ASSERT_TRUE(waitUntil(saved, deadline));
        server->kill();
        ASSERT_TRUE(waitUntil([&] { return !objects->present(device); }, deadline));
        if (restoredWhileAway) {
            controller->restore(0.1);
            queue->sync([] {});
        }
        server->start();
        ASSERT_TRUE(waitUntil([&] { return objects->present(device); }, deadline));
        if (!restoredWhileAway) {
            EXPECT_TRUE(becomes(sinkA, {0, 0})) << "still faded";
            controller->restore(0.1);
        }
        EXPECT_TRUE(becomes(sinkA, before)) << restoredWhileAway;
        EXPECT_TRUE(recordIsGone());
        EXPECT_EQ(defaultDevice(sinkA), device);
    }
}

TEST_P(VolumeOfServerTest, ASinkThatGoesWhileFadedGetsItsVolumeBackWhenItReturns) {
    begin(GetParam());
    server->createSink("usb");
    server->setDefaultSink("usb");
    const auto usb = defaultDevice("usb");
    server->setVolume("usb", {60});
    ASSERT_TRUE(becomes("usb", {0.216F, 0.216F}));
    ASSERT_TRUE(waitUntil([&] { return std::fabs(volumeOf(usb) - 0.6F) < 1e-3F; }, deadline));
    controller->duck(0, 0.15);
    ASSERT_TRUE(becomes("usb", {0, 0}));
    server->destroySink("usb");
    ASSERT_TRUE(waitUntil([&] { return !objects->present(usb); }, deadline));
    defaultDevice(sinkA);
    controller->restore(0.1);
    queue->sync([] {});
    EXPECT_TRUE(defaults->number(PendingRestore::key));
    server->createSink("usb");
    EXPECT_TRUE(becomes("usb", {0.216F, 0.216F}));
    EXPECT_TRUE(recordIsGone());
    EXPECT_TRUE(objects->present(usb));  // the same object
    EXPECT_THAT(server->volume(sinkA), ElementsAre(1.0F, 1.0F));
}

TEST_P(VolumeOfServerTest, ACrashWithoutAServerIsMendedWhenTheServerAppears) {
    begin(GetParam());
    server->setVolume(sinkA, {130, 65});
    const Channels before{cubed(1.3), cubed(0.65)};
    ASSERT_TRUE(becomes(sinkA, before));
    const auto device = defaultDevice(sinkA);
    ASSERT_TRUE(waitUntil([&] { return objects->record(device)->reference > 1.29F; }, deadline));
    controller->duck(0, 0.15);
    ASSERT_TRUE(becomes(sinkA, {0, 0}));
    crash();
    server->stop();
    startProgram();
    controller->duck(0, 0.15);  // nothing to fade, and nothing to overwrite
    queue->sync([] {});
    EXPECT_TRUE(defaults->number(PendingRestore::key));
    server->start();
    EXPECT_TRUE(becomes(sinkA, before));
    EXPECT_TRUE(recordIsGone());
}

TEST_P(VolumeOfServerTest, MuteIsReadAndWrittenAndKeptForADeviceThatIsAway) {
    begin(GetParam());
    const auto device = defaultDevice(sinkA);
    const auto& mute = audio_property::mute;
    ASSERT_TRUE(objects->has(device, mute) && objects->settable(device, mute));
    EXPECT_EQ(read<std::uint32_t>(*objects, device, mute), 0U);
    server->setMute(sinkA, true);
    EXPECT_TRUE(waitUntil([&] { return read<std::uint32_t>(*objects, device, mute) == 1U; }, deadline));
    server->kill();
    ASSERT_TRUE(waitUntil([&] { return !objects->present(device); }, deadline));
    EXPECT_TRUE(objects->has(device, mute));
    EXPECT_TRUE(objects->set(device, mute, std::uint32_t{1}));
    server->start();
    EXPECT_TRUE(waitUntil([&] { return server->muted(sinkA); }, deadline));
    EXPECT_TRUE(objects->set(device, mute, std::uint32_t{0}));
    EXPECT_TRUE(waitUntil([&] { return !server->muted(sinkA); }, deadline));
    // What is no property, no value or no object is refused.
    EXPECT_FALSE(objects->set(device, mute, 1.0F));
    EXPECT_FALSE(objects->set(device, audio_property::volume(0), std::nanf("")));
    EXPECT_FALSE(objects->set(device, audio_property::volume(1), 1.0F));
    EXPECT_FALSE(objects->set(device + 1'000, mute, std::uint32_t{0}));
    EXPECT_FALSE(objects->has(device, audio_property::volume(1)));
}

TEST_P(VolumeOfServerTest, WithoutARealDeviceThereIsNone) {
    begin(GetParam(), {.sinks = {}});
    ASSERT_TRUE(waitUntil([&] { return server->defaultSink() == "auto_null"; }, deadline));
    ASSERT_TRUE(audio->waitUntilKnown(deadline));
    EXPECT_EQ(read<std::uint32_t>(*objects, systemAudioObject, audio_property::defaultOutputDevice), 0U);
    server->createSink("usb");
    defaultDevice("usb");
}

TEST_P(VolumeOfServerTest, AfterFlushTheServerHasTheVolume) {
    begin(GetParam());
    const auto device = defaultDevice(sinkA);
    for (int i = 0; i < 20; ++i) {
        const float scalar = i % 2 == 0 ? 0.25F : 0.75F;
        const float channel = scalar * scalar * scalar;
        objects->set(device, audio_property::volume(0), scalar);
        ASSERT_TRUE(objects->flush(deadline));
        crash();
        EXPECT_TRUE(sameVolume(server->volume(sinkA), {channel, channel})) << i;
        startProgram();
        ASSERT_EQ(defaultDevice(sinkA), device);
    }
    server->kill();
    EXPECT_TRUE(waitUntil([&] { return !objects->flush(100ms); }, deadline));
}

}  // namespace
}  // namespace sordin
