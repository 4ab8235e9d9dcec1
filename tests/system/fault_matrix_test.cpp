// SPDX-License-Identifier: MIT
// The real program, and an audio server that fails at every stage of an ad. The volume must come back.
#include "platform/linux/audio/linux_audio.h"
#include "random_seed.h"
#include "system/sordin_fixture.h"

namespace sordin {
namespace {

using namespace std::chrono_literals;

class FaultMatrixTest : public SordinTest, public testing::WithParamInterface<ServerKind> {
protected:
    using Step = void (FaultMatrixTest::*)();
    struct Named {
        const char* name;
        Step step;
    };

    FaultMatrixTest() {
        beginServer({}, GetParam());
        audio.emplace();
        EXPECT_TRUE(audio->waitUntilKnown(deadline));
        objects = audio->objects();
    }

    // Stages: each ends at a different point of the program's work.

    void start() {
        startProgram();
        std::this_thread::sleep_for(std::chrono::milliseconds(std::uniform_int_distribution(0, 600)(random)));
    }
    void listenOnly() { listen(); }
    void fadeDown() {
        listen();
        play(pieces() / "ads.wav");
        const auto down = [this] {
            const float volume = volumeNow();
            return volume >= 0 && volume < usersScalar - 0.01F;
        };
        ASSERT_TRUE(waitUntil(down, deadline)) << log();
    }
    void beDown() {
        listen();
        play(pieces() / "ads.wav");
        ASSERT_TRUE(says("an ad began")) << log();
        ASSERT_TRUE(sinkBecomes(*server, device, {0, 0}, deadline)) << log();
    }
    void stayDown() {
        ASSERT_NO_FATAL_FAILURE(beDown());
        ASSERT_TRUE(comesToBeRemembered({0, 0})) << "a new server must start with the faded volume";
    }
    void fadeUp() {
        ASSERT_NO_FATAL_FAILURE(beDown());
        player.reset();  // an ad whose sound stops ends
        ASSERT_TRUE(waitUntil([this] { return volumeNow() > 0.01F; }, deadline)) << log();
    }
    void end() {
        ASSERT_NO_FATAL_FAILURE(beDown());
        ending = true;
    }

    // Faults, and how they pass.

    void serverIsKilled() {
        server->kill();
        quitIfEnding();
        server->start();
    }
    void serverHangs() {
        server->hang();
        quitIfEnding();
        std::this_thread::sleep_for(3s);  // longer than every timeout of the program
        server->goOn();
    }
    void deviceGoes() {
        server->destroySink(device);
        quitIfEnding();
        server->createSink(device);
    }

    void quitIfEnding() {
        if (ending) {
            EXPECT_TRUE(endsBy(SIGTERM));
        }
    }
    [[nodiscard]] float volumeNow() const {
        const auto id = read<std::uint32_t>(*objects, systemAudioObject, audio_property::defaultOutputDevice);
        return read<float>(*objects, id.value_or(0), audio_property::volume(0)).value_or(-1);
    }

    /// Whether the device gets back the user's volume. Queries over a connection that was opened earlier,
    /// because a server that has hung does not answer every new connection.
    [[nodiscard]] testing::AssertionResult comesBack(std::chrono::milliseconds within = deadline) const {
        const auto id = objects->adopt({device, "", 1, {}});
        float volume = -1;
        const auto so = [&] {
            volume = read<float>(*objects, id, audio_property::volume(0)).value_or(-1);
            return std::abs(volume - usersScalar) < 1e-3F;
        };
        return (waitUntil(so, within) ? testing::AssertionSuccess() : testing::AssertionFailure())
               << volume << " here, at the server " << server->defaultSink()
               << testing::PrintToString(server->volume(device)) << "\n"
               << log();
    }
    /// Whether the server stores this volume. A server that is killed before that has lost the volume itself.
    /// PulseAudio stores the current volume after ten seconds.
    [[nodiscard]] bool comesToBeRemembered(const std::vector<float>& volume) const {
        const auto stored = [&] { return sameVolume(storedVolume(*server, device), volume); };
        return GetParam() == ServerKind::pulseAudio || waitUntil(stored, deadline);
    }

    /// Starts the program, runs one stage and one fault, and ends the program.
    void run(const Named& stage, const Named& fault) {
        SCOPED_TRACE(std::string(stage.name) + ", " + fault.name);
        ending = false;
        server->start();
        const bool removable = fault.step == &FaultMatrixTest::deviceGoes;
        device = removable ? "usb" : sink;
        if (removable) {
            server->createSink(device);
        }
        server->setDefaultSink(device);
        server->setVolume(device, {80, 40});
        ASSERT_TRUE(sinkBecomes(*server, device, usersVolume, deadline));
        ASSERT_TRUE(comesBack());
        ASSERT_TRUE(comesToBeRemembered(usersVolume));
        ASSERT_NO_FATAL_FAILURE((this->*stage.step)());
        ASSERT_NO_FATAL_FAILURE((this->*fault.step)());
        player.reset();
        EXPECT_TRUE(comesBack());
        EXPECT_TRUE(waitUntil([this] { return !recordIsThere(); }, deadline)) << log();
        if (!ending) {
            const auto listensAgain = [this] {
                const std::string said = log();
                const auto last = said.rfind("status: ");
                return last != std::string::npos && said.substr(last).starts_with("status: listening");
            };
            EXPECT_TRUE(waitUntil(listensAgain, deadline)) << log();
            if (fault.step == &FaultMatrixTest::serverIsKilled) {
                const auto before = log().size();
                play(pieces() / "ads.wav");
                EXPECT_TRUE(says("an ad began", before)) << "Sordin must capture from the new server\n"
                                                         << log();
                player.reset();
                EXPECT_TRUE(says("an ad ended", before)) << log();
                EXPECT_TRUE(comesBack());
            }
            EXPECT_TRUE(endsBy(SIGTERM));
        }
        EXPECT_TRUE(comesBack(0s)) << "the volume must stay";
    }

    std::string device;
    static constexpr float usersScalar = 0.8F;
    const std::vector<float> usersVolume{0.512F, 0.064F};

    const std::vector<Named> stages{
        {"starting", &FaultMatrixTest::start},       {"listening", &FaultMatrixTest::listenOnly},
        {"fading down", &FaultMatrixTest::fadeDown}, {"down", &FaultMatrixTest::stayDown},
        {"fading up", &FaultMatrixTest::fadeUp},     {"ending", &FaultMatrixTest::end}};
    const std::vector<Named> faults{{"the server is killed", &FaultMatrixTest::serverIsKilled},
                                    {"the server hangs", &FaultMatrixTest::serverHangs},
                                    {"the device goes", &FaultMatrixTest::deviceGoes}};

    std::mt19937 random = seededRandom();
    std::optional<LinuxAudio> audio;
    std::shared_ptr<AudioObjects> objects;
    bool ending = false;
};

INSTANTIATE_TEST_SUITE_P(Fault, FaultMatrixTest, bothServers, serverName);

TEST_P(FaultMatrixTest, WhateverFailsWheneverTheVolumeComesBack) {
    const bool pulse = GetParam() == ServerKind::pulseAudio;
    if (std::getenv("SORDIN_LONG") == nullptr) {
        using Pairs = std::vector<std::pair<std::size_t, std::size_t>>;
        const Pairs pairs =
            pulse ? Pairs{{2, 0}, {4, 2}, {5, 1}} : Pairs{{0, 1}, {2, 0}, {3, 0}, {4, 2}, {4, 1}, {5, 1}};
        for (const auto& [stage, fault] : pairs) {
            ASSERT_NO_FATAL_FAILURE(run(stages.at(stage), faults.at(fault)));
        }
        return;
    }
    for (int round = 0; round < 2; ++round) {
        // Before the first fade, PulseAudio has not stored the volume, so it could not return.
        for (std::size_t stage = pulse ? 2 : 0; stage < stages.size(); ++stage) {
            for (const auto& fault : faults) {
                ASSERT_NO_FATAL_FAILURE(run(stages.at(stage), fault)) << round;
            }
        }
    }
}

}  // namespace
}  // namespace sordin
