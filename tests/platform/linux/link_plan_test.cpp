// SPDX-License-Identifier: MIT
#include "platform/linux/pipewire/link_plan.h"

#include <gmock/gmock.h>

#include <unistd.h>

namespace sordin::pipewire {
namespace {

using testing::IsEmpty;
using testing::Pair;
using testing::UnorderedElementsAre;

/// A server with this program (client 1, node 10 with ports 11 and 12) and a player (client 2, node 20 with
/// ports 21, left, and 22, right).
class LinkPlanTest : public testing::Test {
protected:
    LinkPlanTest() {
        graph.ownClient = 1;
        graph.clients[1] = client(100);
        graph.clients[2] = client(200);
        graph.nodes[10] = node("Stream/Input/Audio", 1);
        graph.nodes[20] = node("Stream/Output/Audio", 2);
        graph.ports[11] = {10, false, false, "FL"};
        graph.ports[12] = {10, false, false, "FR"};
        graph.ports[21] = {20, true, false, "FL"};
        graph.ports[22] = {20, true, false, "FR"};
    }

    static Client client(int processId) {
        Client result;
        result.described = true;
        result.processId = processId;
        result.connectedProcessId = processId;
        return result;
    }
    static Node node(const std::string& mediaClass, GlobalId owner) {
        Node result;
        result.mediaClass = mediaClass;
        result.client = owner;
        result.described = true;
        return result;
    }
    [[nodiscard]] std::set<PortPair> plan() const { return linkPlan(graph, 10); }

    Graph graph;
};

TEST_F(LinkPlanTest, EachSideGoesToItsOwnAndTheMiddleToBoth) {
    graph.ports[23] = {20, true, false, "LFE"};
    graph.ports[24] = {20, true, true, "FL"};    // a monitor
    graph.ports[25] = {20, false, false, "FL"};  // an input
    EXPECT_THAT(plan(), UnorderedElementsAre(Pair(21, 11), Pair(22, 12), Pair(23, 11), Pair(23, 12)));

    for (const auto* left : {"FL", "SL", "RL", "TFL", "TRL", "FLC", "RLC", "TSL"}) {
        EXPECT_EQ(sideOf(left), Side::left) << left;
    }
    for (const auto* right : {"FR", "SR", "RR", "TFR", "TRR", "FRC"}) {
        EXPECT_EQ(sideOf(right), Side::right) << right;
    }
    for (const auto* both : {"MONO", "FC", "RC", "TC", "TFC", "LFE", "AUX0", "UNK", "", "F"}) {
        EXPECT_EQ(sideOf(both), Side::both) << both;
    }
}

TEST_F(LinkPlanTest, OwnSoundIsNeverHeardAndUnknownSoundNotYet) {
    graph.clients[2].described = false;
    EXPECT_THAT(plan(), IsEmpty());
    graph.clients[2] = client(100);  // a second connection of this process
    EXPECT_THAT(plan(), IsEmpty());
    graph.clients.erase(2);
    EXPECT_THAT(plan(), IsEmpty());

    graph.clients[2] = client(300);
    graph.clients[2].throughPulse = true;
    graph.clients[2].processId = getpid();
    EXPECT_THAT(plan(), IsEmpty());
    graph.clients[2].portalApplication = "org.example.Player";  // the same process id in another sandbox
    EXPECT_EQ(plan().size(), 2U);

    graph.nodes[20].described = false;
    EXPECT_THAT(plan(), IsEmpty());
}

TEST_F(LinkPlanTest, FiltersAndLoopbacksAreNotHeardTwiceButMicrophonesThroughThemOnce) {
    graph.nodes[20].linkGroup = "loopback-1";
    EXPECT_THAT(plan(), IsEmpty());  // a loop of a sink or filter
    graph.nodes[30] = node("Stream/Input/Audio", 2);
    graph.nodes[30].linkGroup = "loopback-1";
    EXPECT_EQ(plan().size(), 2U);  // a loop of a microphone
    graph.nodes[30].capturesSink = true;
    EXPECT_THAT(plan(), IsEmpty());  // a loop of a sink's monitor
}

TEST_F(LinkPlanTest, OfTooManyStreamsThoseThatPlayComeFirst) {
    for (GlobalId id = 1'000; id < 1'500; ++id) {
        graph.nodes[id] = node("Stream/Output/Audio", 2);
        graph.ports[id + 1'000] = {id, true, false, "MONO"};
    }
    graph.nodes[1'499].running = true;
    const auto most = plan();
    EXPECT_EQ(most.size(), 2 * mostLinksOfAPort);
    EXPECT_EQ(most.count({2'499, 11}) + most.count({2'499, 12}) + most.count({21, 11}), 3U);
    graph.nodes.erase(1'000);
    EXPECT_EQ(plan().size(), 2 * mostLinksOfAPort);
}

TEST(MetadataValue, NamesANode) {
    EXPECT_EQ(nodeName(R"({"name":"speakers"})"), "speakers");
    for (const auto* damaged : {"", "{", "[]", "7", R"({"name":7})", R"({"other":"x"})"}) {
        EXPECT_EQ(nodeName(damaged), "") << damaged;
    }
}

}  // namespace
}  // namespace sordin::pipewire
