// SPDX-License-Identifier: MIT
#include "guard/guard_process.h"
#include "rig/temporary_folder.h"

#include <gmock/gmock.h>

#include <csignal>
#include <sys/wait.h>

namespace sordin {
namespace {

const PendingRestore pending{0.5F, std::nullopt};

TEST(GuardProcess, WithoutAHelperIsAsNoGuard) {
    const TemporaryFolder folder;
    GuardProcess guard(folder / "no-such-helper", folder.path());
    EXPECT_EQ(guard.pid(), -1);
    guard.inForce(pending);
    guard.givenBack();
    EXPECT_EQ(guard.pid(), -1);
}

TEST(GuardProcess, IsReplacedOnlyWhenThereIsSomethingToTell) {
    const TemporaryFolder folder;
    GuardProcess guard("/bin/cat", folder.path());
    const pid_t first = guard.pid();
    ASSERT_GT(first, 0);
    siginfo_t ended{};
    ASSERT_EQ(waitid(P_PID, static_cast<id_t>(first), &ended, WEXITED | WNOWAIT),
              0);  // ends at once: it cannot read the folder
    guard.givenBack();
    EXPECT_EQ(guard.pid(), -1);
    guard.inForce(pending);
    EXPECT_GT(guard.pid(), 0);
}

}  // namespace
}  // namespace sordin
