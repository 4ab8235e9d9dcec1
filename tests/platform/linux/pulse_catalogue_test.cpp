// SPDX-License-Identifier: MIT
#include "platform/linux/pulse/catalogue.h"
#include "platform/linux/pulse/stream_mixer.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <unistd.h>

namespace sordin::pulse {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

TEST(PulseCatalogue, OnlyApplicationsOwnSoundIsAudible) {
    constexpr Index monitor = 11;
    constexpr Index microphone = 12;
    Catalogue catalogue;
    catalogue.sinks[0] = {"speaker", "", {}, true, monitor, 1};
    catalogue.sinks[5] = {"remapped", "", {}, true, 15, 30};
    catalogue.clients = {{1, {100}}, {2, {getpid()}}, {3, {}}};
    catalogue.recorders = {{1, {monitor, 31}}, {2, {microphone, 32}}};
    const auto audible = [&](const Player& player) { return catalogue.isAudible(player); };
    EXPECT_TRUE(audible({0, 1, {}}));
    EXPECT_FALSE(audible({0, 2, {}})) << "this program";
    EXPECT_TRUE(audible({0, 3, {}})) << "the owner is unknown";
    EXPECT_FALSE(audible({0, 4, {}})) << "the program of the client is not known yet";
    EXPECT_FALSE(audible({0, {}, 30})) << "the output of another sink";
    EXPECT_FALSE(audible({0, {}, 31})) << "a loop from a sink's monitor";
    EXPECT_TRUE(audible({0, {}, 32})) << "a loop from a microphone";
    EXPECT_TRUE(audible({0, {}, 33})) << "for example received over the network";

    EXPECT_TRUE(catalogue.plays({0, 1, {}}));
    EXPECT_FALSE(catalogue.plays({0, 1, {}, true})) << "the stream is paused";
    EXPECT_FALSE(catalogue.plays({7, 1, {}})) << "the stream has no sink";
    catalogue.sinks[0].running = false;
    EXPECT_FALSE(catalogue.plays({0, 1, {}})) << "the device is suspended";
}

TEST(PulseCatalogue, AProcessCountsOnlyIfItIsTheOneThatItSaysItIs) {
    const std::string own = std::to_string(getpid());
    const std::string file = std::filesystem::read_symlink("/proc/self/exe").filename();
    EXPECT_EQ(processHere(own, file), getpid());
    EXPECT_EQ(processHere(own, ""), getpid());
    EXPECT_EQ(processHere(own, "player"), std::nullopt);  // in a sandbox, the id belongs to another process
    for (const char* wrong : {"", "0", "-1", "12x", "99999999999", "2147483647", "../1"}) {
        EXPECT_EQ(processHere(wrong, file), std::nullopt) << wrong;
    }
}

TEST(StreamMixer, AddsUpWhatHasArrivedOfAllAndWaitsForNoneForLong) {
    StreamMixer mixer(4);
    const std::vector<float> ones(3, 1);
    const std::vector<float> twos(2, 2);
    mixer.add(1, ones);
    EXPECT_THAT(mixer.take(), ElementsAre(1, 1, 1));
    mixer.add(1, ones);
    mixer.add(2, twos);
    EXPECT_THAT(mixer.take(), ElementsAre(3, 3));
    EXPECT_THAT(mixer.take(), IsEmpty());  // the second stream has no data yet
    mixer.add(1, ones);
    mixer.add(1, ones);
    EXPECT_THAT(mixer.take(), ElementsAre(1, 1, 1));  // waits no longer than the limit
    mixer.add(2, twos);
    EXPECT_THAT(mixer.take(), ElementsAre(3, 3));
    mixer.remove(2);
    EXPECT_THAT(mixer.take(), ElementsAre(1, 1));  // no other stream to wait for

    mixer.add(1, ones);
    mixer.add(2, twos);
    mixer.remove(1);
    mixer.remove(1);
    EXPECT_THAT(mixer.take(), ElementsAre(3, 3));  // keeps the data of the stream that ended
    mixer.remove(2);
    EXPECT_THAT(mixer.take(), ElementsAre(1));
    EXPECT_THAT(mixer.take(), SizeIs(0));
}

}  // namespace
}  // namespace sordin::pulse
