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
    EXPECT_TRUE(audible({0, 3, {}})) << "of nobody knows whom";
    EXPECT_FALSE(audible({0, 4, {}})) << "its program is not known yet";
    EXPECT_FALSE(audible({0, {}, 30})) << "what another sink passes on";
    EXPECT_FALSE(audible({0, {}, 31})) << "a loop from a sink's monitor";
    EXPECT_TRUE(audible({0, {}, 32})) << "a loop from a microphone";
    EXPECT_TRUE(audible({0, {}, 33})) << "received over the network, say";

    EXPECT_TRUE(catalogue.plays({0, 1, {}}));
    EXPECT_FALSE(catalogue.plays({0, 1, {}, true})) << "paused";
    EXPECT_FALSE(catalogue.plays({7, 1, {}})) << "to no sink";
    catalogue.sinks[0].running = false;
    EXPECT_FALSE(catalogue.plays({0, 1, {}})) << "the device sleeps";
}

TEST(PulseCatalogue, AProcessCountsOnlyIfItIsTheOneThatItSaysItIs) {
    const std::string own = std::to_string(getpid());
    const std::string file = std::filesystem::read_symlink("/proc/self/exe").filename();
    EXPECT_EQ(processHere(own, file), getpid());
    EXPECT_EQ(processHere(own, ""), getpid());
    EXPECT_EQ(processHere(own, "player"), std::nullopt);  // the number is another's, inside a sandbox
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
    EXPECT_THAT(mixer.take(), IsEmpty());  // the second has nothing yet
    mixer.add(1, ones);
    mixer.add(1, ones);
    EXPECT_THAT(mixer.take(), ElementsAre(1, 1, 1));  // no more than the patience stays behind
    mixer.add(2, twos);
    EXPECT_THAT(mixer.take(), ElementsAre(3, 3));
    mixer.remove(2);
    EXPECT_THAT(mixer.take(), ElementsAre(1, 1));  // nobody is left to be waited for

    mixer.add(1, ones);
    mixer.add(2, twos);
    mixer.remove(1);
    mixer.remove(1);
    EXPECT_THAT(mixer.take(), ElementsAre(3, 3));  // what had arrived of the one that ended is not lost
    mixer.remove(2);
    EXPECT_THAT(mixer.take(), ElementsAre(1));
    EXPECT_THAT(mixer.take(), SizeIs(0));
}

}  // namespace
}  // namespace sordin::pulse
