// SPDX-License-Identifier: MIT
#include "platform/linux/storage/pending_restore_lock.h"
#include "rig/child_process.h"
#include "rig/temporary_folder.h"

#include <gmock/gmock.h>

#include <future>

namespace sordin {
namespace {

using namespace std::chrono_literals;
using State = PendingRestoreLock::State;

TEST(PendingRestoreLock, IsHeldByOneAtATimeWhereThereCanBeOne) {
    const TemporaryFolder base;
    const auto folder = base / "not/there/yet";
    {
        const PendingRestoreLock first(folder);
        ASSERT_EQ(first.state(), State::held);
        EXPECT_EQ(PendingRestoreLock(folder).state(), State::taken);
        EXPECT_EQ(PendingRestoreLock(folder, 30ms).state(), State::taken);
        EXPECT_EQ(PendingRestoreLock(base.path()).state(), State::held) << "each folder has a separate lock";
    }
    EXPECT_EQ(PendingRestoreLock(folder).state(), State::held);
    writeText(base / "file", "");
    EXPECT_EQ(PendingRestoreLock(base / "file").state(), State::impossible);
    EXPECT_EQ(PendingRestoreLock("/proc/nowhere").state(), State::impossible);
}

TEST(PendingRestoreLock, WaitsForTheOtherToLetGo) {
    const TemporaryFolder folder;
    auto first = std::make_unique<PendingRestoreLock>(folder.path());
    std::promise<void> begun;
    auto second = std::async(std::launch::async, [&] {
        begun.set_value();
        return PendingRestoreLock(folder.path(), 60s).state();
    });
    begun.get_future().wait();
    EXPECT_NE(second.wait_for(50ms), std::future_status::ready);
    first.reset();
    EXPECT_EQ(second.get(), State::held);
}

TEST(PendingRestoreLock, IsNotInheritedByProgramsThatAreStarted) {
    const TemporaryFolder folder;
    auto lock = std::make_unique<PendingRestoreLock>(folder.path());
    ChildProcess child({"cat"}, {.readOutput = true, .writeInput = true});
    child.writeLine("started");
    ASSERT_EQ(child.readLine(10s), "started");
    lock.reset();
    EXPECT_EQ(PendingRestoreLock(folder.path()).state(), State::held);
}

}  // namespace
}  // namespace sordin
