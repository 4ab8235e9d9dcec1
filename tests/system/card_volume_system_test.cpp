// SPDX-License-Identifier: MIT
// Fading on a sound card whose routes have separate volumes.
#include "rig/child_process.h"
#include "rig/private_audio_server.h"
#include "system/ear.h"
#include "system/volume_fixture.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <cmath>

namespace sordin {
namespace {

using namespace std::chrono_literals;
using testing::FloatNear;

constexpr auto deadline = 20s;

/// A fake sound card: "fake-sink" with the routes "fake-speaker" and "fake-headphones".
class Card {
public:
    struct Write {
        std::string route;
        std::vector<float> volumes;
        bool save;
    };

    /// Returns when the card is the default. WirePlumber 0.4 sometimes never selects a route of a new card,
    /// so the constructor selects one.
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
    /// The next volume written to the card; "save" is whether the session manager stores it.
    std::optional<Write> nextWrite(std::chrono::milliseconds within = deadline) {
        const auto line = process_.readLine(within);
        if (!line) {
            return std::nullopt;
        }
        const auto json = nlohmann::json::parse(*line);
        return Write{json["route"], json["volumes"], json["save"]};
    }
    /// Whether the card receives this volume. Does not query the server, which many queries would disturb.
    testing::AssertionResult isTold(const std::string& route, float volume) {
        auto said = testing::AssertionFailure();
        while (const auto write = nextWrite()) {
            if (write->route == route && std::fabs(write->volumes.at(0) - volume) < 1e-4F) {
                return testing::AssertionSuccess();
            }
            said << write->route << testing::PrintToString(write->volumes);
        }
        return said << " and no more";
    }

private:
    ChildProcess process_;
};

class CardVolumeTest : public VolumeSystemTest {
protected:
    static constexpr float usersVolume = 0.343F;  // 70 %

    /// Waits until a new card is the default, and sets its volume as by hardware keys.
    AudioObjectId useCard(Card& card) {
        const auto device = defaultDevice("fake-sink");
        EXPECT_TRUE(sees(device, 0.4F));
        card.say("volume 0.343 0.343");
        EXPECT_TRUE(sees(device, 0.7F));
        while (card.nextWrite(10ms)) {
        }
        return device;
    }
};

TEST_F(CardVolumeTest, WritesTheRouteOfACardStepByStepWithoutHavingItRemembered) {
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

TEST_F(CardVolumeTest, AFadeGoesOnWhileTheSessionManagerConfiguresTheCapture) {
    begin();
    Card card(*server);
    useCard(card);
    Ear ear(*audio);
    ASSERT_EQ(ear.start(), "");
    const auto capture = dynamic_cast<PrivateAudioServer&>(*server).nodeId("sordin");
    ASSERT_TRUE(capture);
    // The server stops reading from a client until another client has carried out its request. Clients that
    // wait for each other would stop all sound of the desktop.
    card.say("configure " + std::to_string(*capture) + " 2000");
    controller->duck(0, 0.15);
    EXPECT_TRUE(card.isTold("fake-speaker", 0));
    controller->restore(0.6);
    EXPECT_TRUE(card.isTold("fake-speaker", usersVolume));
}

TEST_F(CardVolumeTest, HeadphonesPluggedInMeanwhileKeepTheirOwnVolume) {
    begin();
    Card card(*server);
    const auto speaker = useCard(card);
    controller->duck(0, 0.15);
    ASSERT_TRUE(card.isTold("fake-speaker", 0));
    card.say("route fake-headphones");
    AudioObjectId headphones = speaker;
    ASSERT_TRUE(waitUntil([&] { return (headphones = defaultDevice("fake-sink")) != speaker; }, deadline));
    EXPECT_FALSE(objects->present(speaker));
    ASSERT_TRUE(card.isTold("fake-headphones", 0.064F));  // by the session manager, as on every new route
    controller->restore(0.1);
    queue->sync([] {});
    while (const auto write = card.nextWrite(500ms)) {
        EXPECT_FALSE(write->route == "fake-headphones" && !write->save) << "Sordin wrote to the headphones";
    }
    EXPECT_TRUE(defaults->number(PendingRestore::key));  // the restore of the speaker is still pending
    card.say("route fake-speaker");
    EXPECT_TRUE(card.isTold("fake-speaker", usersVolume));
    EXPECT_TRUE(recordIsGone());
    EXPECT_EQ(defaultDevice("fake-sink"), speaker);
}

TEST_F(CardVolumeTest, ACardFadedByAProgramThatDiedIsNotLeftDownByARestartedServer) {
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
    // The session manager writes this first, although no Sordin runs.
    EXPECT_TRUE(card.isTold("fake-speaker", 0.064F));
}

}  // namespace
}  // namespace sordin
