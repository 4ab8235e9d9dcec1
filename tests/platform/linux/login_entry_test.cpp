// SPDX-License-Identifier: MIT
#include "platform/linux/desktop/login_entry.h"
#include "rig/child_process.h"
#include "rig/temporary_folder.h"

#include <gmock/gmock.h>

#include <sys/stat.h>

namespace sordin {
namespace {

namespace fs = std::filesystem;

TEST(LoginEntry, IsThereOnlyIfAskedForAndFollowsTheDesktop) {
    const TemporaryFolder folder;
    const fs::path autostart = folder / "config/autostart";
    const LoginEntry entry(autostart, "/usr/bin/sordin");
    EXPECT_FALSE(entry.active());
    EXPECT_FALSE(entry.setActive(false)) << "there is no entry to remove";
    EXPECT_FALSE(fs::exists(autostart));
    EXPECT_FALSE(entry.setActive(true));
    EXPECT_TRUE(entry.active());
    const fs::path file = autostart / "org.sordin.Sordin.desktop";
    const std::string text = contentsOf(file);
    EXPECT_THAT(text, testing::HasSubstr("\nExec=\"/usr/bin/sordin\" --hidden\n"));
    for (const std::string off : {"Hidden=true\n", "X-GNOME-Autostart-enabled=false\n"}) {
        writeText(file, text + off);
        EXPECT_FALSE(entry.active()) << off;
    }
    EXPECT_FALSE(entry.setActive(true));
    EXPECT_TRUE(entry.active()) << "the user's last choice";
    EXPECT_FALSE(entry.setActive(false));
    EXPECT_TRUE(fs::is_empty(autostart));

    writeText(folder / "file", "");
    EXPECT_TRUE(LoginEntry(folder / "file", "/usr/bin/sordin").setActive(true))
        << "the error of a failed write";
}

/// The command of the key Exec, unescaped as a string and then as a command, as the Desktop Entry
/// Specification defines.
std::string commandIn(const std::string& text) {
    const auto start = text.find("\nExec=") + 6;
    const std::string line = text.substr(start, text.find('\n', start) - start);
    std::string value;
    for (std::size_t i = 0; i < line.size(); ++i) {
        const bool escape = line[i] == '\\' && i + 1 < line.size();
        const char c = escape ? line[++i] : line[i];
        value += !escape ? c : c == 't' ? '\t' : c == 'n' ? '\n' : c;
    }
    std::string command;
    for (std::size_t i = 1; i < value.size() && value[i] != '"'; ++i) {
        if (value[i] == '\\' || value[i] == '%') {
            ++i;
        }
        command += value[i];
    }
    return command;
}

TEST(LoginEntry, StartsProgramsWithAnyName) {
    const TemporaryFolder folder;
    for (const std::string name :
         {"/opt/My Programs/sordin", "/a\"b", "/a\\b", "/50%u", "/$HOME`x`", "/ü\tq"}) {
        const LoginEntry entry(folder.path(), name);
        ASSERT_FALSE(entry.setActive(true));
        EXPECT_EQ(commandIn(contentsOf(folder / "org.sordin.Sordin.desktop")), name);
    }
}

}  // namespace
}  // namespace sordin
