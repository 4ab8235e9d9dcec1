// SPDX-License-Identifier: MIT
// The whole program with a real audio server and a real player.
#include "platform/linux/audio/linux_audio.h"
#include "random_seed.h"
#include "system/sordin_fixture.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <sstream>

namespace sordin {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

/// A number from /proc/PID/status.
long statusFigure(pid_t process, const std::string& name) {
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind(name + ":", 0) == 0) {
            return std::stol(line.substr(name.size() + 1));
        }
    }
    return -1;
}

long openFiles(pid_t process) {
    const std::filesystem::directory_iterator files("/proc/" + std::to_string(process) + "/fd");
    return std::distance(begin(files), end(files));
}

/// Whether a fade of this many steps passes through this volume.
bool onCurve(float volume, int steps) {
    for (int i = 0; i <= steps; ++i) {
        const double t = static_cast<double>(i) / steps;
        if (std::fabs(static_cast<double>(volume) - t * t * (3 - 2 * t)) < 1e-3) {
            return true;
        }
    }
    return false;
}

class SordinSystemTest : public SordinTest {};

/// Runs with each of the audio servers.
class SordinServerTest : public SordinTest, public testing::WithParamInterface<ServerKind> {
protected:
    /// A command that records the output of the loudspeaker.
    [[nodiscard]] std::vector<std::string> recorder(const std::filesystem::path& file) const {
        if (GetParam() == ServerKind::pipeWire) {
            return {"pw-record", "--target",   sink,         "-P", "{ stream.capture.sink=true }",
                    "--rate",    "16000",      "--channels", "1",  "--format",
                    "f32",       file.string()};
        }
        return {"parecord",          "--device",          std::string(sink) + ".monitor",
                "--rate=16000",      "--channels=1",      "--format=float32le",
                "--file-format=wav", "--latency-msec=50", file.string()};
    }
};
INSTANTIATE_TEST_SUITE_P(Sordin, SordinServerTest, bothServers, serverName);

TEST_P(SordinServerTest, AnAdInABroadcastIsFadedOutAndBackAndRemembered) {
    beginServer({.monitorVolumes = true}, GetParam());
    // Without transcription, because phrases prolong an ad.
    writeText(home / "config/Sordin/defaults.json", R"({"onboarded": true, "transcription": false})");
    listen();
    const LinuxAudio audio;
    VolumeRecorder volumes(audio.objects());
    ChildProcess ear(recorder(home / "heard.wav"), {.log = home / "ear"});
    ASSERT_TRUE(waitUntil([&] { return std::filesystem::exists(home / "heard.wav"); }, deadline));
    play(pieces() / "excerpt.wav");
    const double began = volumes.now();
    ASSERT_TRUE(says("an ad ended", 0, 120s)) << log();
    ASSERT_TRUE(becomes(1));
    ASSERT_TRUE(player->wait(60s));
    ear.kill(SIGINT);
    ear.wait(deadline);

    const auto changes = volumes.changes();
    const auto lowest = std::min_element(changes.begin(), changes.end(),
                                         [](auto& a, auto& b) { return a.volume < b.volume; });
    ASSERT_NE(lowest, changes.end());
    EXPECT_EQ(lowest->volume, 0);
    // Down the curve, each step once, then up, and nothing else.
    EXPECT_TRUE(
        std::is_sorted(changes.begin(), lowest + 1, [](auto& a, auto& b) { return a.volume > b.volume; }));
    EXPECT_TRUE(std::is_sorted(lowest, changes.end(), [](auto& a, auto& b) { return a.volume < b.volume; }));
    EXPECT_GE(lowest - changes.begin(), 5);
    EXPECT_GE(changes.end() - lowest, 20);
    for (auto change = changes.begin(); change != changes.end(); ++change) {
        EXPECT_TRUE(onCurve(change->volume, change < lowest ? 7 : 30)) << change->volume;
    }
    EXPECT_EQ(changes.back().volume, 1);
    // The times of the detector, with a tolerance for a loaded machine.
    const auto ad = excerptAd();
    const double down = lowest->time - began;
    const double up = changes.back().time - began;
    EXPECT_GT(down, ad.start - 1);
    EXPECT_LT(down, ad.start + 12);
    EXPECT_GT(up, ad.end - 6);
    EXPECT_LT(up, ad.end + 16);

    const auto events = history();
    ASSERT_EQ(events.size(), 1U) << events;
    EXPECT_EQ(events[0]["kind"], "muted");
    EXPECT_THAT(events[0]["app"].get<std::string>(),
                testing::HasSubstr(GetParam() == ServerKind::pipeWire ? "pw-" : "pacat"));
    EXPECT_NEAR(events[0]["duration"].get<double>(), up - down, 2);
    EXPECT_FALSE(events[0]["reasons"].empty());
    EXPECT_FALSE(recordIsThere());

    // The recording must show it, too: silence during the fade, sound before it.
    const auto level = [this](double from, double seconds) {
        const auto log = home / "level";
        std::filesystem::remove(log);
        outputOf({"sox", (home / "heard.wav").string(), "-n", "trim", std::to_string(from),
                  std::to_string(seconds), "stat"},
                 log);
        const std::string text = contentsOf(log);
        const auto at = text.find("RMS     amplitude:");
        return at == std::string::npos ? std::nan("") : std::stod(text.substr(at + 18));
    };
    EXPECT_LT(level(down + 2, up - down - 5), 1e-4);
    EXPECT_GT(level(3, 8), 0.01);
}

TEST_F(SordinSystemTest, NothingButItsEndEndsAFadeAndEverySignalGivesTheVolumeBackFirst) {
    beginServer();
    server->setVolume(sink, {80});
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        enterAd();
        ChildProcess second({SORDIN_PROGRAM}, {.environment = environment(), .log = home / "second"});
        EXPECT_EQ(second.wait(60s), 1);
        EXPECT_THAT(contentsOf(home / "second"), testing::HasSubstr("already running"));
        EXPECT_TRUE(recordIsThere()) << "a second start does not disturb the first";
        EXPECT_TRUE(endsBy(signal));
        EXPECT_NEAR(server->volume(sink).at(0), 0.512F, 1e-3F);  // already restored, not soon
        EXPECT_FALSE(recordIsThere());
        EXPECT_EQ(history().at(0)["kind"], "muted");  // the ad was ended and saved
        player.reset();
    }
    EXPECT_EQ(history().size(), 3U);
}

TEST_P(SordinServerTest, AKilledProgramLeavesNoVolumeDown) {
    beginServer({}, GetParam());
    std::mt19937 random = seededRandom();
    std::uniform_int_distribution<int> milliseconds(0, 12'000);
    const int rounds = GetParam() == ServerKind::pipeWire ? repetitions(5, 100) : repetitions(2, 20);
    for (int i = 0; i < rounds; ++i) {
        SCOPED_TRACE(i);
        listen();
        play(pieces() / "ads.wav");
        std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds(random)));  // a random moment
        ASSERT_TRUE(endsBy(SIGKILL));
        ASSERT_TRUE(comesBackWhole()) << "the guard must restore";
        player.reset();
    }
    // Without a guard, the next start restores.
    enterAd();
    for (const auto& process : std::filesystem::directory_iterator("/proc")) {
        const std::string parent = process.path() / "status";
        if (contentsOf(parent).find("PPid:\t" + std::to_string(program->pid()) + "\n") != std::string::npos &&
            contentsOf(process.path() / "comm").rfind("sordin-volume-", 0) == 0) {
            ::kill(std::stoi(process.path().filename()), SIGKILL);
        }
    }
    ASSERT_TRUE(endsBy(SIGKILL));
    player.reset();
    EXPECT_TRUE(recordIsThere());
    ASSERT_TRUE(becomes(0, 1s));
    listen();
    EXPECT_TRUE(comesBackWhole());
}

TEST_F(SordinSystemTest, AServerThatComesLateIsHeardWithoutAWord) {
    beginServer();
    server->stop();
    startProgram();
    ASSERT_TRUE(says("status: failed Cannot reach the PipeWire audio server.")) << log();
    const auto before = log().size();
    std::this_thread::sleep_for(std::chrono::seconds(repetitions(0, 50)));
    server->start();
    EXPECT_TRUE(says("status: listening", before, 50s)) << log();
    play(pieces() / "ads.wav");
    EXPECT_TRUE(says("an ad began", before)) << log();
}

TEST_F(SordinSystemTest, WithoutDisplayServerAndLocaleItPrintsOneLine) {
    beginServer();
    server->stop();
    display.emplace_back("LC_ALL=C");
    for (const bool onboarded : {true, false}) {
        writeText(home / "config/Sordin/defaults.json", onboarded ? R"({"onboarded": true})" : "{}");
        startProgram();
        ASSERT_TRUE(says("no display")) << log();
        ASSERT_TRUE(!onboarded || says("status: failed")) << log();
        EXPECT_TRUE(endsBy(SIGINT)) << "no volume was changed, so there is nothing to confirm";
        std::istringstream lines(log());
        std::vector<std::string> printed;
        for (std::string line; std::getline(lines, line);) {
            if (line.rfind("status: ", 0) != 0) {
                printed.push_back(line);
            }
        }
        EXPECT_THAT(printed, ElementsAre(testing::HasSubstr(onboarded ? "; press Ctrl+C to quit"
                                                                      : "first-run guide")));
    }
}

TEST_F(SordinSystemTest, ListeningForLongCostsNoMoreThanAtFirst) {
    // The decoder starts with the first suspicious words and then stays. That may take long, so the short
    // form runs without it.
    const int warmUp = repetitions(15, 180);
    if (warmUp < 60) {
        writeText(home / "config/Sordin/defaults.json", R"({"onboarded": true, "transcription": false})");
    }
    beginServer();
    listen();
    play(pieces() / "talk.wav");
    const auto figures = [this] {
        return std::vector<long>{statusFigure(program->pid(), "VmRSS"), openFiles(program->pid()),
                                 statusFigure(program->pid(), "Threads")};
    };
    std::this_thread::sleep_for(std::chrono::seconds(warmUp));
    const auto first = figures();
    std::this_thread::sleep_for(std::chrono::seconds(repetitions(45, 600)));
    const auto last = figures();
    EXPECT_LT(last[0], first[0] + 2048) << "resident memory in KiB";
    EXPECT_EQ(last[1], first[1]) << "open files";
    EXPECT_EQ(last[2], first[2]) << "threads";
}

}  // namespace
}  // namespace sordin
