// SPDX-License-Identifier: MIT
// sordin-audio with a private server: what must survive the death of the program or of the server.
#include "random_seed.h"
#include "rig/private_audio_server.h"
#include "system/sink_volume.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <cstdlib>
#include <functional>

namespace sordin {
namespace {

using namespace std::chrono_literals;
using nlohmann::json;

constexpr auto deadline = 20s;
constexpr auto sink = "test-sink-A";

/// The command and its output.
class AudioCommand {
public:
    explicit AudioCommand(const std::filesystem::path& folder)
        : process_({SORDIN_AUDIO, "--json", "--folder=" + folder.string()},
                   {.readOutput = true, .writeInput = true}) {}

    void say(const std::string& line) { process_.writeLine(line); }
    void kill(int signal) { process_.kill(signal); }
    std::optional<int> wait() { return process_.wait(deadline); }

    /// Whether a matching line of output arrives.
    bool expect(const std::function<bool(const json&)>& matches) {
        const auto end = std::chrono::steady_clock::now() + deadline;
        while (std::chrono::steady_clock::now() < end) {
            const auto line = process_.readLine(1s);
            if (line && matches(json::parse(*line))) {
                return true;
            }
        }
        return false;
    }
    bool expectState(const std::string& state) {
        return expect([&](const json& said) { return said.value("state", "") == state; });
    }
    bool expectWrite(double volume) {
        return expect([&](const json& said) { return std::fabs(said.value("write", -1.0) - volume) < 1e-3; });
    }
    /// Whether the level comes close to `rms` while `who` plays.
    bool expectLevel(double rms, const std::string& who) {
        return expect([&](const json& said) {
            return std::fabs(said.value("rms", -1.0) - rms) < 0.02 && said["source"] == who;
        });
    }

private:
    ChildProcess process_;
};

class AudioCommandTest : public testing::Test {
protected:
    AudioCommandTest() {
        server.start();
        server.setVolume(sink, {80, 40});
        EXPECT_TRUE(comesBack());
    }
    /// Whether the user's volume comes back and no restore is pending.
    [[nodiscard]] testing::AssertionResult comesBack(std::chrono::milliseconds within = deadline) const {
        const auto back = sinkBecomes(server, sink, before, within);
        const auto nothingPending = [&] { return !exists(folder / "pending-restore.json"); };
        return back && !waitUntil(nothingPending, within) ? testing::AssertionFailure() << "a record" : back;
    }

    const std::vector<float> before{0.512F, 0.064F};
    PrivateAudioServer server;
    TemporaryFolder folder;
};

TEST_F(AudioCommandTest, HearsNamesFadesAndOutlivesTheServer) {
    AudioCommand command(folder.path());
    ASSERT_TRUE(command.expectState("listening"));
    for (int round = 0; round < 2; ++round) {
        ChildProcess player({SORDIN_TONE_PLAYER, "440", "0.5"}, {.writeInput = true});
        EXPECT_TRUE(command.expectLevel(0.3536, "tone_player"));
        command.say("duck 0.5");
        EXPECT_TRUE(command.expectWrite(0.4));
        EXPECT_TRUE(command.expectLevel(0.3536, "tone_player"));
        server.kill();
        EXPECT_TRUE(command.expectState("ended"));
        command.say("restore");
        EXPECT_TRUE(command.expectWrite(0.8));
        server.start();
        EXPECT_TRUE(command.expectState("listening"));
        EXPECT_TRUE(comesBack()) << round;
    }
    command.say("stop");
    EXPECT_TRUE(command.expectState("stopped"));
    command.say("quit");
    EXPECT_EQ(command.wait(), 0);
}

TEST_F(AudioCommandTest, EveryOrderlyEndGivesTheVolumeBack) {
    for (const int signal : {0, SIGTERM, SIGINT, SIGHUP}) {
        AudioCommand command(folder.path());
        ASSERT_TRUE(command.expectState("listening"));
        command.say("duck");
        ASSERT_TRUE(command.expectWrite(0));
        signal == 0 ? command.say("quit") : command.kill(signal);
        EXPECT_EQ(command.wait(), 0);
        // At once, because the program waits until the server has the volume.
        EXPECT_TRUE(comesBack(0s)) << signal;
    }
}

TEST_F(AudioCommandTest, KilledAtAnyInstantItRestoresAtTheNextStart) {
    auto random = seededRandom();
    std::uniform_int_distribution<int> instant(0, 1'200);
    const int kills = std::getenv("SORDIN_LONG") != nullptr ? 50 : 5;
    for (int i = 0; i < kills; ++i) {
        {
            AudioCommand command(folder.path());
            ASSERT_TRUE(command.expectState("listening"));
            command.say("duck");
            command.say("restore 0.4");
            command.say("duck");
            // The test needs a random instant, so it cannot wait for a condition.
            std::this_thread::sleep_for(std::chrono::milliseconds(instant(random)));
            command.kill(SIGKILL);
            EXPECT_EQ(command.wait(), 128 + SIGKILL);
        }
        AudioCommand next(folder.path());
        EXPECT_TRUE(comesBack()) << "kill " << i;
        next.say("quit");
        EXPECT_EQ(next.wait(), 0);
        ASSERT_TRUE(comesBack(0s)) << "kill " << i;
    }
}

TEST(AudioCommand, CommandLineMistakesAreSaid) {
    const TemporaryFolder folder;
    for (const auto& argument : {"--nonsense", "--seconds=soon", "file"}) {
        ChildProcess command({SORDIN_AUDIO, argument}, {.log = folder / "log"});
        EXPECT_EQ(command.wait(deadline), 2) << argument;
    }
    EXPECT_NE(contentsOf(folder / "log").find("'soon'"), std::string::npos);
}

}  // namespace
}  // namespace sordin
