// SPDX-License-Identifier: MIT
// The whole program except main(), to check what remains in its process.
#include "app/application.h"
#include "system/sordin_fixture.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <algorithm>
#include <fstream>
#include <iterator>
#include <set>

namespace sordin {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;
using Names = std::multiset<std::string>;

class ApplicationSystemTest : public SordinTest {
protected:
    struct Process {
        pid_t pid;
        std::string name;
    };

    static std::string nameOf(const fs::path& process) {
        std::string name;
        std::getline(std::ifstream(process / "comm"), name);
        return name;
    }
    static std::vector<Process> children() {
        std::vector<Process> all;
        for (const auto& thread : fs::directory_iterator("/proc/self/task")) {
            std::ifstream pids(thread.path() / "children");
            for (pid_t pid = 0; pids >> pid;) {
                all.push_back({pid, nameOf("/proc/" + std::to_string(pid))});
            }
        }
        return all;
    }
    /// Everything that a part of the program could leave behind: threads, processes, files.
    static Names everything() {
        Names all;
        for (const auto& thread : fs::directory_iterator("/proc/self/task")) {
            all.insert("thread " + nameOf(thread.path()));
        }
        for (const Process& child : children()) {
            all.insert("process " + child.name);
        }
        for (const auto& file : fs::directory_iterator("/proc/self/fd")) {
            std::error_code closedMeanwhile;
            const auto target = fs::read_symlink(file.path(), closedMeanwhile).string();
            all.insert("file " + target.substr(0, target.find(':')));
        }
        return all;
    }
    /// The process id of the decoder, if it runs.
    static std::optional<pid_t> decoder() {
        for (const Process& child : children()) {
            if (child.name.starts_with("sordin-speech")) {
                return child.pid;
            }
        }
        return std::nullopt;
    }
    template <class Condition>
    static bool comes(Condition condition) {
        return waitUntil(
            [&] {
                QCoreApplication::processEvents();
                return condition();
            },
            60s);
    }
};

TEST_F(ApplicationSystemTest, NothingIsLeftInTheProcessWhateverItWasDoing) {
    using Kind = EngineStatus::Kind;
    struct Case {
        const char* settings;
        bool played;
        std::function<bool(const SordinEngine&)> reached;
        bool decoderStopped = false;
    };
    const auto is = [](Kind kind) {
        return [kind](const SordinEngine& engine) { return engine.status() == kind; };
    };
    const auto transcribes = [](const SordinEngine& engine) {
        return engine.adActive() && engine.transcribing() && decoder();
    };
    const std::vector<Case> cases{{R"({"onboarded": true, "enabled": false})", false, is(Kind::disabled)},
                                  {R"({})", false, is(Kind::starting)},
                                  {R"({"onboarded": true})", false, is(Kind::listening)},
                                  {R"({"onboarded": true, "sensitivity": 1})", true, transcribes},
                                  {R"({"onboarded": true, "sensitivity": 1})", true, transcribes, true}};
    static_cast<void>(QDBusConnection::sessionBus());  // Qt keeps this connection
    beginServer();
    setenv("XDG_CONFIG_HOME", (home / "config").c_str(), 1);  // separate from the server's
    setenv("XDG_DATA_HOME", (home / "data").c_str(), 1);
    const Names before = everything();
    for (std::size_t i = 0; i < cases.size(); ++i) {
        SCOPED_TRACE(i);
        const Case& now = cases[i];
        writeText(home / "config/Sordin/defaults.json", now.settings);
        std::optional<Application> application(std::in_place, SORDIN_PROGRAM, nullptr);
        if (now.played) {
            play(pieces() / "ads.wav");
        }
        ASSERT_TRUE(comes([&] { return now.reached(application->engine()); }));
        if (now.decoderStopped) {
            kill(*decoder(), SIGSTOP);
        }
        application.reset();
        player.reset();
        Names left;
        EXPECT_TRUE(waitUntil(
            [&] {
                const Names after = everything();
                left.clear();
                std::set_difference(after.begin(), after.end(), before.begin(), before.end(),
                                    std::inserter(left, left.end()));
                return left.empty();
            },
            10s))
            << testing::PrintToString(left);
    }
}

}  // namespace
}  // namespace sordin
