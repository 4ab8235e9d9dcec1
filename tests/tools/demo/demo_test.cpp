// SPDX-License-Identifier: MIT
// The demonstrations with a silent broadcast.
#include "rig/child_process.h"
#include "rig/temporary_folder.h"

#include <gmock/gmock.h>
#include <sndfile.h>

#include <algorithm>
#include <fstream>
#include <regex>

namespace sordin {
namespace {

using namespace std::chrono_literals;
using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr auto deadline = 30s;

class DemoTest : public testing::Test {
protected:
    /// Writes a silent recording of `seconds` with one commercial break.
    void makeBroadcast(int seconds, const std::string& breakStart, const std::string& breakEnd) const {
        constexpr int rate = 16'000;
        SF_INFO info{0, rate, 1, SF_FORMAT_WAV | SF_FORMAT_PCM_16, 0, 0};
        SNDFILE* const file = sf_open(recording.c_str(), SFM_WRITE, &info);
        ASSERT_TRUE(file);
        const std::vector<float> second(rate);
        for (int i = 0; i < seconds; ++i) {
            sf_writef_float(file, second.data(), rate);
        }
        sf_close(file);
        writeText(labels, breakStart + "\t" + breakEnd + "\tad\n");
    }

    /// The command lines of all processes with this environment variable.
    [[nodiscard]] static std::vector<std::string> processesWith(const std::string& variable) {
        std::vector<std::string> found;
        for (const auto& process : std::filesystem::directory_iterator("/proc")) {
            if (contentsOf(process.path() / "environ").find(variable) != std::string::npos) {
                found.push_back(contentsOf(process.path() / "cmdline"));
            }
        }
        return found;
    }

    const TemporaryFolder folder;
    const std::filesystem::path recording = folder / "broadcast.wav";
    const std::filesystem::path labels = folder / "broadcast.txt";
};

TEST_F(DemoTest, CountsWhatWasFadedAndCitesTheUsualFiguresOfTheDocumentation) {
    makeBroadcast(10, "2", "6");
    // Replaces sordin-replay: down from 3 s to 8 s, which is 3 of the break's 4 s and 2 of the other 6 s.
    std::string hops;
    for (int hop = 1; hop <= 20; ++hop) {
        hops += R"({"t": )" + std::to_string(hop / 2.0) + R"(, "confidence": 0.6, "inAd": )" +
                (hop >= 6 && hop < 16 ? "true" : "false") + R"(, "event": )" +
                (hop == 6    ? R"("started")"
                 : hop == 16 ? R"({"ended": {"reasons": ["Audio", "Boundary"]}})"
                             : "null") +
                "}\n";
    }
    const auto replay = folder / "replay";
    // The other rules: down from 1 s to 4 s, which is 2 of the break's 4 s and 1 of the other 6 s.
    writeText(
        replay,
        "#!/bin/sh\n[ \"$1 $2\" = '--rules standard' ] && echo '{\"ads\": [{\"start\": 1, \"end\": 4}]}' "
        "&& exit\n[ \"$1 $2\" = '--rules tuned' ] || exit 1\ncat <<'END'\n" +
            hops + "END\n");
    std::filesystem::permissions(replay, std::filesystem::perms::owner_all);
    const std::vector<std::string> command{SORDIN_DEMO_FAST, "--tuned", replay.string(), recording.string(),
                                           labels.string()};
    const auto output = outputOf(command, {}, deadline).value_or("it failed");
    EXPECT_THAT(
        output,
        AllOf(HasSubstr("A broadcast of 0:10 minutes"), HasSubstr("first break begins at 0:02 and lasts 4 s"),
              HasSubstr("0:02.0  Broadcast: commercials begin"), HasSubstr("0:03.0  Sordin: an ad began"),
              HasSubstr("0:08.0  Sordin: an ad ended after 5.0 s: Audio, Boundary\n"),
              HasSubstr("0:10.0  confidence 60 %, volume 100 %"),
              HasSubstr(
                  "tuned rules, as shown: 3 of 4 seconds of ads (75 %), 2 of 6 seconds of programme (33 %)"),
              HasSubstr("standard rules, in a replay: 2 of 4 seconds of ads (50 %), 1 of 6 seconds of "
                        "programme (17 %)")));

    // For each set of rules: of ads | of programme | reaction / ... | release / ...
    const std::string figures = contentsOf(SORDIN_DETECTION_FIGURES);
    const std::string set = R"( (\d+) % \| ([0-9.]+) % \| ([0-9.]+) / [0-9.]+ s \| ([0-9.]+) / [0-9.]+ s \|)";
    std::smatch usual;
    ASSERT_TRUE(std::regex_search(
        figures, usual, std::regex(R"(\| radio \| 0\.5 \| \*\*Sordin, with words\*\* \|)" + set + set)));
    EXPECT_THAT(output, AllOf(HasSubstr("fade " + usual[1].str() + " % of the ads and " + usual[2].str() +
                                        " % of the"),
                              HasSubstr("tuned rules " + usual[5].str() + " % and " + usual[6].str() + " %"),
                              HasSubstr("fade within " + usual[3].str() +
                                        " s by the standard rules, within " + usual[7].str() + " s"),
                              HasSubstr("back after " + usual[4].str() + " s"),
                              HasSubstr("rules after " + usual[8].str() + " s")));

    writeText(replay, "#!/bin/sh\nexit 1\n");
    EXPECT_FALSE(outputOf(command, folder / "log", deadline))
        << "a failed replay must fail the demonstration";
}

TEST_F(DemoTest, LeavesNothingBehindHoweverItEnds) {
    makeBroadcast(60, "0.5", "50");
    const auto temporary = folder / "tmp";
    std::filesystem::create_directory(temporary);
    const std::string variable = "TMPDIR=" + temporary.string();
    const auto leftBehind = [&] {
        for (const auto& each : std::filesystem::directory_iterator(temporary)) {
            return each.path().string();
        }
        return std::string();
    };
    struct Case {
        std::string sordin;
        std::string line;  // wait for this line,
        int signal;        // then send this signal, if any
    };
    for (const Case& each :
         {Case{SORDIN_PROGRAM, "A broadcast of", SIGINT}, Case{SORDIN_PROGRAM, "commercials begin", SIGTERM},
          Case{SORDIN_PROGRAM, "commercials begin", SIGHUP}, Case{"/nonexistent", "A broadcast of", 0}}) {
        SCOPED_TRACE(each.line + std::to_string(each.signal));
        ChildProcess demo({SORDIN_DEMO, each.sordin, SORDIN_REPLAY, recording.string(), labels.string()},
                          {.environment = {variable}, .log = folder / "log", .readOutput = true});
        std::string line;
        while (line.find(each.line) == std::string::npos) {
            const auto next = demo.readLine(deadline);
            ASSERT_TRUE(next) << contentsOf(folder / "log");
            line = *next;
        }
        if (each.signal != 0) {
            demo.kill(each.signal);
        }
        EXPECT_EQ(demo.wait(deadline), each.signal != 0 ? 128 + each.signal : 1);
        EXPECT_EQ(leftBehind(), "");
        EXPECT_THAT(processesWith(variable), IsEmpty());
    }
    EXPECT_THAT(contentsOf(folder / "log"),
                testing::MatchesRegex("sordin-demo: Sordin failed to start listening[^\n]*\n"))
        << "no other messages";
}

}  // namespace
}  // namespace sordin
