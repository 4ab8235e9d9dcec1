// SPDX-License-Identifier: MIT
// Fading on virtual sinks.
#include "system/volume_fixture.h"

#include <gmock/gmock.h>

#include <atomic>
#include <cmath>
#include <future>

namespace sordin {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

class VolumeOfServerTest : public VolumeSystemTest, public testing::WithParamInterface<ServerKind> {};
INSTANTIATE_TEST_SUITE_P(Volume, VolumeOfServerTest, bothServers, serverName);

TEST_P(VolumeOfServerTest, FadesAVirtualSinkAndBringsVolumeAndBalanceBack) {
    begin(GetParam());
    const auto device = defaultDevice(sinkA);
    for (const auto& percents : {std::vector<int>{80, 40}, {130, 65}, {0, 0}, {100, 100}}) {
        server->setVolume(sinkA, percents);
        const Channels before{cubed(percents[0] / 100.0), cubed(percents[1] / 100.0)};
        ASSERT_TRUE(becomes(sinkA, before));
        ASSERT_TRUE(sees(device, std::min(static_cast<float>(percents[0]) / 100, 1.0F)));
        controller->duck(0, 0.15);
        EXPECT_TRUE(becomes(sinkA, {0, 0}));
        controller->restore(0.6);
        EXPECT_TRUE(becomes(sinkA, before)) << percents[0];
        EXPECT_TRUE(recordIsGone());
    }
    controller->duck(0.5F, 0.15);
    ASSERT_TRUE(becomes(sinkA, {0.125F, 0.125F}));
    server->setDefaultSink(sinkB);
    defaultDevice(sinkB);
    controller->restore(0.6);
    EXPECT_TRUE(becomes(sinkA, {1, 1})) << "the restore does not depend on the default device";
    EXPECT_THAT(server->volume(sinkB), ElementsAre(1.0F, 1.0F)) << "no other sink is changed";
}

TEST_F(VolumeSystemTest, EachChangeOfTheDefaultIsSeenThoughOthersConnectAllTheTime) {
    begin();
    std::atomic<bool> enough = false;
    std::vector<std::future<void>> others(2);
    for (auto& other : others) {
        other = std::async(std::launch::async, [&] {
            while (!enough) {
                outputOf({"pw-metadata", "0"}, "/dev/null");
            }
        });
    }
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
    const auto saved = [&] {  // the session manager stores the volume of virtual sinks
        return GetParam() != ServerKind::pipeWire || storedVolume(*server, sinkA) == Channels{0, 0};
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
            EXPECT_TRUE(becomes(sinkA, {0, 0})) << "the sink is still faded";
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
    ASSERT_TRUE(sees(usb, 0.6F));
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
    EXPECT_TRUE(objects->present(usb));  // the same object id
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
    controller->duck(0, 0.15);  // no device to fade, and the record must stay
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
    // Invalid properties, values and objects are rejected.
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
    EXPECT_TRUE(objects->flush(100ms)) << "the server has processed all writes";
    objects->set(device, audio_property::volume(0), 1.0F);
    EXPECT_FALSE(objects->flush(100ms));
}

}  // namespace
}  // namespace sordin
