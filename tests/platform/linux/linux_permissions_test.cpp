// SPDX-License-Identifier: MIT
#include "platform/linux/desktop/linux_permissions.h"
#include "rig/temporary_folder.h"
#include "support/own_files.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace sordin {
namespace {

TEST(LinuxPermissions, OnlyASandboxWithoutTheServersSocketLacksThem) {
    const TemporaryFolder folder;
    setenv("XDG_RUNTIME_DIR", folder.path().c_str(), 1);
    unsetenv("PIPEWIRE_RUNTIME_DIR");
    unsetenv("PIPEWIRE_REMOTE");
    const LinuxPermissions permissions(folder / "sandbox");
    EXPECT_TRUE(permissions.screenCapturePreflight()) << "a server that is away is no missing permission";
    writeText(folder / "sandbox", "");
    EXPECT_FALSE(permissions.screenCapturePreflight());
    setenv("PIPEWIRE_REMOTE", "other", 1);
    writeText(folder / "pipewire-0", "");
    EXPECT_FALSE(permissions.screenCapturePreflight()) << "the socket of another server";
    unsetenv("PIPEWIRE_REMOTE");
    EXPECT_TRUE(permissions.screenCapturePreflight());
    unsetenv("XDG_RUNTIME_DIR");
}

}  // namespace
}  // namespace sordin
