// SPDX-License-Identifier: MIT
// A program that fades, its real guard, and a death without notice.
#include "guard/guard_start.h"
#include "platform/linux/storage/pending_restore_lock.h"
#include "random_seed.h"
#include "rig/private_audio_server.h"
#include "rig/wait_until.h"
#include "sink_volume.h"
#include "support/file_descriptor.h"

#include <gtest/gtest.h>

#include <csignal>
#include <poll.h>
#include <sys/inotify.h>
#include <sys/syscall.h>
#include <thread>

namespace sordin {
namespace {

using namespace std::chrono_literals;
using State = PendingRestoreLock::State;

constexpr auto deadline = 20s;
constexpr auto sinkA = "test-sink-A";
constexpr auto sinkB = "test-sink-B";

using Channels = std::vector<float>;

/// A guard, which is not a child of the test.
class Guard {
public:
    explicit Guard(pid_t pid) : pid_(pid), process_(static_cast<int>(syscall(SYS_pidfd_open, pid, 0))) {}

    [[nodiscard]] pid_t pid() const { return pid_; }
    void signal(int number) const { kill(pid_, number); }
    [[nodiscard]] bool ends() const {
        pollfd gone{process_.get(), POLLIN, 0};
        return poll(&gone, 1, std::chrono::milliseconds(deadline).count()) == 1;
    }

private:
    pid_t pid_;
    FileDescriptor process_;
};

/// Counts opens and closes of a file from now on. Polling the lock itself could miss the moment in which
/// another process holds it.
class FileUses {
public:
    explicit FileUses(const std::filesystem::path& file) : events_(inotify_init1(IN_CLOEXEC)) {
        EXPECT_GE(inotify_add_watch(events_.get(), file.c_str(), IN_OPEN | IN_CLOSE), 0);
    }

    [[nodiscard]] bool reach(int opened, int closed) {
        pollfd ready{events_.get(), POLLIN, 0};
        while (opened_ < opened || closed_ < closed) {
            inotify_event event{};  // without a name, because it watches the file itself
            if (poll(&ready, 1, std::chrono::milliseconds(deadline).count()) != 1 ||
                read(events_.get(), &event, sizeof event) != sizeof event) {
                return false;
            }
            ((event.mask & IN_OPEN) != 0 ? opened_ : closed_)++;
        }
        return true;
    }

private:
    FileDescriptor events_;
    int opened_ = 0;
    int closed_ = 0;
};

class VolumeGuardSystemTest : public testing::Test {
protected:
    VolumeGuardSystemTest() {
        server.start();
        server.setVolume(sinkA, {80, 40});
        server.setVolume(sinkB, {30});
        EXPECT_TRUE(becomes(sinkA, before) && becomes(sinkB, others));
    }

    void startProgram(const std::string& option = {}) {
        program.emplace(std::vector<std::string>{SORDIN_DUCKING_PROGRAM, folder.path(), option},
                        ChildOptions{.readOutput = true, .writeInput = true});
        ASSERT_EQ(program->readLine(deadline), "ready");
    }

    std::string ask(const std::string& command) {
        program->writeLine(command);
        return program->readLine(deadline).value_or("");
    }
    /// Ducks and waits for the last step, because the step before it is nearly as low.
    void duck() {
        ask("duck");
        ASSERT_TRUE(waitUntil([this] { return server.volume(sinkA) == Channels{0, 0}; }, deadline));
    }
    Guard guard() { return Guard(std::stoi(ask("guard"))); }

    void killProgram() {
        program->kill(SIGKILL);
        ASSERT_EQ(program->wait(deadline), 128 + SIGKILL);
    }

    testing::AssertionResult becomes(const std::string& sink, const Channels& channels) const {
        return sinkBecomes(server, sink, channels, deadline);
    }
    testing::AssertionResult is(const std::string& sink, const Channels& channels) const {
        return sinkBecomes(server, sink, channels, 0s);
    }
    [[nodiscard]] bool hasRecord() const { return exists(folder / "pending-restore.json"); }
    /// Whether the lock becomes free.
    [[nodiscard]] bool lockIsFree() const {
        return PendingRestoreLock(folder.path(), deadline).state() == State::held;
    }

    const Channels before{0.512F, 0.064F};
    const Channels low{0.001F, 0.001F};
    const Channels others{0.027F, 0.027F};
    PrivateAudioServer server;
    const TemporaryFolder folder;
    std::optional<ChildProcess> program;
};

TEST_F(VolumeGuardSystemTest, GivesBackWheneverTheProgramIsKilled) {
    auto random = seededRandom();
    const auto someTime = [&random](int most) {
        std::this_thread::sleep_for(
            std::chrono::milliseconds(std::uniform_int_distribution(0, most)(random)));
    };
    for (int round = 0; round < 12; ++round) {
        startProgram();
        const Guard watching = guard();
        if (round % 3 == 0) {
            ask("duck");  // a kill during the fade
            someTime(160);
        } else {
            duck();
        }
        if (round % 3 == 2) {
            ask("restore");  // a kill during the restore, and just after it
            someTime(700);
        }
        killProgram();
        ASSERT_TRUE(watching.ends());
        EXPECT_TRUE(is(sinkA, before)) << round;
        EXPECT_FALSE(hasRecord()) << round;
    }
    EXPECT_TRUE(becomes(sinkB, others)) << "no other sink is changed";
}

TEST_F(VolumeGuardSystemTest, HearsWhatTheProgramSaidLastThoughItIsGoneAndNeverLowers) {
    struct Case {
        bool restored;
        int usersPercent;  // after the fade; 0 for no change
        Channels volume;
    };
    for (const auto& [restored, percent, volume] :
         {Case{false, 0, before}, Case{true, 10, low}, Case{false, 90, {0.729F, 0.729F}}}) {
        server.setVolume(sinkA, {80, 40});
        ASSERT_TRUE(becomes(sinkA, before));
        startProgram();
        const Guard watching = guard();
        watching.signal(SIGSTOP);
        duck();
        if (restored) {
            ask("restore-now");
        }
        if (percent > 0) {
            server.setVolume(sinkA, {percent});
            ASSERT_TRUE(becomes(sinkA, volume));
        }
        killProgram();
        watching.signal(SIGCONT);
        ASSERT_TRUE(watching.ends());
        EXPECT_TRUE(is(sinkA, volume)) << percent;
        EXPECT_FALSE(hasRecord()) << percent;
    }
}

TEST_F(VolumeGuardSystemTest, GivesBackWhatItWasToldThoughTheRecordCannotBeRead) {
    startProgram();
    const Guard watching = guard();
    duck();
    std::filesystem::remove(folder / "pending-restore.json");
    std::filesystem::create_symlink("/proc/self/mem", folder / "pending-restore.json");
    killProgram();
    ASSERT_TRUE(watching.ends());
    EXPECT_TRUE(is(sinkA, before));
}

TEST_F(VolumeGuardSystemTest, ANewStartAtOnceAndTheGuardDoNotDisturbEachOther) {
    for (int round = 0; round < 3; ++round) {
        startProgram();
        const Guard watching = guard();
        duck();
        killProgram();
        startProgram();  // either the guard or the new start restores
        ASSERT_TRUE(watching.ends());
        EXPECT_TRUE(becomes(sinkA, before));
        EXPECT_TRUE(waitUntil([&] { return !hasRecord(); }, deadline));
    }
}

TEST_F(VolumeGuardSystemTest, EndsTheMutingOfADeviceWithoutAVolume) {
    server.setMute(sinkB, true);
    startProgram("mute-only");
    const Guard watching = guard();
    ask("duck");
    ASSERT_TRUE(waitUntil([&] { return server.muted(sinkA); }, deadline));
    killProgram();
    ASSERT_TRUE(watching.ends());
    EXPECT_FALSE(server.muted(sinkA));
    EXPECT_TRUE(server.muted(sinkB));
    EXPECT_TRUE(is(sinkA, before));
}

TEST_F(VolumeGuardSystemTest, OutlivesTheSignalsThatEndASessionButNotTheProgram) {
    startProgram();
    const Guard watching = guard();
    for (const int signal : {SIGTERM, SIGHUP, SIGINT, SIGPIPE}) {
        watching.signal(signal);
    }
    EXPECT_EQ(getsid(watching.pid()), watching.pid()) << "the guard must lead a separate session";
    const auto onlyWhatItBecomes = [&] {
        std::vector<std::string> beyondItsOwn;
        for (const auto& entry :
             std::filesystem::directory_iterator("/proc/" + std::to_string(watching.pid()) + "/fd")) {
            std::error_code closedMeanwhile;
            if (std::stoi(entry.path().filename()) >= guard_start::firstFreeDescriptor) {
                beyondItsOwn.push_back(read_symlink(entry.path(), closedMeanwhile).filename());
            }
        }
        return beyondItsOwn == std::vector<std::string>{"sordin-volume-restorer"};
    };
    EXPECT_TRUE(waitUntil(onlyWhatItBecomes, deadline)) << "libraries are open only during the start";
    duck();
    killProgram();
    ASSERT_TRUE(watching.ends());
    EXPECT_TRUE(becomes(sinkA, before));

    // Without a pending restore, the guard ends and changes no volume.
    for (const bool restored : {true, false}) {
        startProgram();
        const Guard idle = guard();
        if (restored) {
            duck();
            ask("restore-now");
            EXPECT_FALSE(hasRecord());
            server.setVolume(sinkA, {10});
            ASSERT_TRUE(becomes(sinkA, low));
        }
        restored ? killProgram() : program->closeInput();
        EXPECT_TRUE(idle.ends());
        EXPECT_TRUE(is(sinkA, low));
    }
}

TEST_F(VolumeGuardSystemTest, IsStartedAgainForTheNextDuckIfItHasDied) {
    startProgram();
    for (const int end : {SIGKILL, SIGSTOP}) {  // a stopped guard accepts no messages
        const Guard first = guard();
        first.signal(end);
        if (end == SIGKILL) {
            ASSERT_TRUE(first.ends());
        }
        pid_t now = -1;
        ASSERT_TRUE(waitUntil(
            [&] {
                ask("duck");
                ask("restore-now");
                now = guard().pid();
                return now > 0 && now != first.pid();
            },
            deadline));
        ASSERT_TRUE(first.ends());
    }
    const Guard last = guard();
    duck();
    killProgram();
    ASSERT_TRUE(last.ends());
    EXPECT_TRUE(becomes(sinkA, before));
    EXPECT_FALSE(hasRecord());
}

TEST_F(VolumeGuardSystemTest, LeavesEverythingToWhoHoldsTheLock) {
    startProgram("without-lock");
    const Guard watching = guard();
    duck();
    const PendingRestoreLock lock(folder.path());
    ASSERT_EQ(lock.state(), State::held);
    killProgram();
    ASSERT_TRUE(watching.ends());
    EXPECT_TRUE(is(sinkA, {0, 0})) << "the volume must not change";
    EXPECT_TRUE(hasRecord());
}

TEST_F(VolumeGuardSystemTest, WaitsForADeviceThatIsAway) {
    const auto dieWithoutDevice = [this](const char* sink) {
        server.createSink(sink);
        server.setVolume(sink, {60});
        EXPECT_TRUE(becomes(sink, {0.216F, 0.216F}));
        server.setDefaultSink(sink);
        startProgram();
        Guard watching = guard();
        ask("duck");
        EXPECT_TRUE(becomes(sink, {0, 0}));
        server.destroySink(sink);
        FileUses lock(folder.path() / "pending-restore.lock");
        killProgram();  // also closes the lock
        EXPECT_TRUE(lock.reach(1, 2)) << "the guard must release the lock for a new start while it waits";
        return watching;
    };
    {
        const Guard watching = dieWithoutDevice("usb");
        EXPECT_TRUE(hasRecord());
        server.createSink("usb");
        ASSERT_TRUE(watching.ends());
        EXPECT_TRUE(is("usb", Channels{0.216F, 0.216F}));
        EXPECT_FALSE(hasRecord());
        server.destroySink("usb");
    }
    {
        const Guard watching = dieWithoutDevice("hdmi");
        watching.signal(SIGTERM);  // only the record remains
        ASSERT_TRUE(watching.ends());
        EXPECT_TRUE(hasRecord()) << "the record is for the next start";
    }
    EXPECT_TRUE(is(sinkA, before));
}

}  // namespace
}  // namespace sordin
