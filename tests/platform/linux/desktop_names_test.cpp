// SPDX-License-Identifier: MIT
// From a process to the application name that the user knows.
#include "platform/linux/desktop/application_id.h"
#include "platform/linux/desktop/desktop_entry.h"
#include "platform/linux/desktop/linux_process_directory.h"
#include "platform/linux/desktop/process_application.h"
#include "platform/linux/desktop/shown_name.h"
#include "rig/temporary_folder.h"

#include <gmock/gmock.h>

#include <map>
#include <sys/stat.h>
#include <unistd.h>

namespace sordin {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

std::string ofUnit(const std::string& unit) {
    const std::string user = "0::/user.slice/user-1000.slice/user@1000.service/app.slice/";
    return applicationIdFromCgroup(user + unit + "\n").value_or("-");
}

TEST(ApplicationId, IsReadFromTheUnitsThatDesktopsMake) {
    EXPECT_EQ(ofUnit("app-gnome-org.mozilla.firefox-12345.scope"), "org.mozilla.firefox");
    EXPECT_EQ(ofUnit("app-flatpak-com.example.Radio-9876.scope"), "com.example.Radio");
    EXPECT_EQ(ofUnit("app-org.kde.konsole-1f2e3d4c.scope"), "org.kde.konsole");
    EXPECT_EQ(ofUnit("app-gnome-firefox\\x2desr-4242.scope"), "firefox-esr");
    EXPECT_EQ(ofUnit("app-firefox@abc.service"), "firefox");
    EXPECT_EQ(ofUnit("app-kde-org.example.Player@0f0f.service"), "org.example.Player");
    EXPECT_EQ(ofUnit("app-mpv.service"), "mpv");
    EXPECT_EQ(ofUnit("dbus-:1.2-org.gnome.Calculator@0.service"), "org.gnome.Calculator");
    EXPECT_EQ(ofUnit("snap.firefox.firefox-0b9d3bd2-8d5c-4f35-8a3a-0d1a5ad0f7b1.scope"), "firefox_firefox");
    EXPECT_EQ(ofUnit("snap.radio.player.service"), "radio_player");
    EXPECT_EQ(ofUnit("app-gnome-firefox-1.scope/child"), "firefox");
    EXPECT_EQ(ofUnit("app-org.gnome.Terminal.slice/vte-spawn-0b9d3bd2.scope"), "-") << "a terminal tab";
    EXPECT_EQ(applicationIdFromCgroup("0::/user.slice/user-1000.slice/session-2.scope\n"), std::nullopt);
    EXPECT_EQ(applicationIdFromCgroup("12:pids:/x\n1:name=systemd:/app-mpv-1.scope\n"), "mpv");
}

TEST(ApplicationId, IsReadFromFlatpaksRecord) {
    EXPECT_EQ(applicationIdFromFlatpakInfo("[Application]\nname=com.example.Radio\nruntime=x\n"),
              "com.example.Radio");
    EXPECT_EQ(applicationIdFromFlatpakInfo("[Instance]\nname=no\n[Application]\r\n name = yes \r\n"), "yes");
    EXPECT_EQ(applicationIdFromFlatpakInfo("[Application]\nname=\n[Other]\nname=no"), std::nullopt);
    EXPECT_EQ(applicationIdFromFlatpakInfo("name=no"), std::nullopt);
}

TEST(DesktopEntry, GivesTheNameInTheUsersLanguage) {
    const std::string entry = "# a comment\n"
                              "[Desktop Action New]\nName=New window\n"
                              "[Desktop Entry]\n"
                              "Name[de]=Radio DE\n"
                              "Name=Radio\n"
                              "Name[de_AT]=Radio AT\n"
                              "Name[sr@latin]=Radio Latin\n"
                              "Name[fr]=\n"
                              "[Other]\nName=Other\n";
    const auto name = [&](const std::string& locale) {
        return desktopEntryName(entry, locale).value_or("-");
    };
    EXPECT_EQ(name("C"), "Radio");
    EXPECT_EQ(name(""), "Radio");
    EXPECT_EQ(name("de_DE.UTF-8"), "Radio DE");
    EXPECT_EQ(name("de_AT.UTF-8"), "Radio AT");
    EXPECT_EQ(name("de_AT@euro"), "Radio AT");
    EXPECT_EQ(name("sr_RS.UTF-8@latin"), "Radio Latin");
    EXPECT_EQ(name("sr_RS"), "Radio");
    EXPECT_EQ(name("fr_FR"), "Radio") << "an empty translation does not count";
    EXPECT_EQ(desktopEntryName("[Desktop Entry]\nName=A\\sB\\\\C\\", ""), "A B\\C\\");
    EXPECT_EQ(desktopEntryName("[Desktop Entry]\nComment=x", "de"), std::nullopt);
}

TEST(ShownName, IsOneShortLineOfUtf8WhateverWasChosen) {
    const std::string broken = "\xEF\xBF\xBD";
    const std::vector<std::pair<std::string, std::string>> names{
        {"Radio", "Radio"},
        {" \t Two\r\n\nlines \n", "Two lines"},
        {"\u05E8\u05D3\u05D9\u05D5 \U0001F468\u200D\U0001F3A4",
         "\u05E8\u05D3\u05D9\u05D5 \U0001F468\u200D\U0001F3A4"},
        {"a\u202Egnp.exe\u2066\uFEFF\u0085\x7F\x1B[31m", "agnp.exe [31m"},
        {"caf\xE9", "caf" + broken},
        {"\xC0\xAF|\xED\xA0\x80|\xF4\x90\x80\x80|\xE2\x82", broken + broken + "|" + broken + broken + broken +
                                                                "|" + broken + broken + broken + broken +
                                                                "|" + broken + broken},
        {std::string(80, 'x'), std::string(80, 'x')},
        {std::string(65'536, 'x'), std::string(79, 'x') + "…"},
        {std::string(79, 'x') + " y", std::string(79, 'x') + "…"},
        {"\n\u202E", ""}};
    for (const auto& [chosen, shown] : names) {
        EXPECT_EQ(shownName(chosen), shown);
    }
}

class LinuxProcessDirectoryTest : public testing::Test {
private:
    TemporaryFolder base_;

protected:
    LinuxProcessDirectoryTest() {
        fs::create_directories(base_ / "first");
        fs::create_directories(base_ / "second");
        entry("second", "com.example.Radio", "Radio");
        entry("second", "mpv", "mpv Media Player");
    }

    void entry(const std::string& folder, const std::string& id, const std::string& name) {
        writeText(base_ / folder / (id + ".desktop"), "[Desktop Entry]\nName=" + name + "\n");
    }

    fs::path process(int id, const std::string& executable, const std::string& unit = "session-2.scope") {
        const auto folder = base_ / "proc" / std::to_string(id);
        fs::create_directories(folder / "root");
        writeText(folder / "cgroup", "0::/user.slice/" + unit + "\n");
        if (!executable.empty()) {
            fs::create_symlink(executable, folder / "exe");
        }
        return folder;
    }

    [[nodiscard]] std::string name(int id) const {
        const auto application = directory_.runningApplication(id);
        return application ? application->localisedName : "(none)";
    }

    [[nodiscard]] const fs::path& base() const { return base_.path(); }
    [[nodiscard]] const LinuxProcessDirectory& directory() const { return directory_; }

    std::map<std::int32_t, std::string> sandboxed;  // processes known to the portal

private:
    LinuxProcessDirectory directory_{
        DesktopEntries({base_ / "first", base_ / "second"}, ""), base_ / "proc", [this](std::int32_t id) {
            const auto found = sandboxed.find(id);
            return found == sandboxed.end() ? std::nullopt : std::optional(found->second);
        }};
};

TEST_F(LinuxProcessDirectoryTest, NamesProcessesByWhatIsKnownOfThem) {
    const auto flatpak = process(10, "/app/bin/radio", "app-flatpak-com.other-1.scope");
    writeText(flatpak / "root/.flatpak-info", "[Application]\nname=com.example.Radio\n");
    EXPECT_EQ(name(10), "Radio");
    process(11, "/usr/lib/radio/bin", "app-gnome-com.example.Radio-1.scope");
    EXPECT_EQ(name(11), "Radio");
    process(12, "/usr/bin/mpv", "app-gnome-org.unknown-1.scope");
    EXPECT_EQ(name(12), "mpv Media Player");
    process(13, "/usr/bin/radio-helper", "app-gnome-org.unknown-1.scope");
    EXPECT_EQ(name(13), "org.unknown");
    process(14, "/usr/bin/player (deleted)");
    EXPECT_EQ(name(14), "player");
    writeText(process(15, "") / "comm", "someone else's\n");
    EXPECT_EQ(name(15), "someone else's");
    sandboxed = {{14, "com.example.Radio"}, {2, "org.example.Unlisted"}};
    EXPECT_EQ(name(14), "Radio") << "not the process with this id outside the sandbox";
    EXPECT_EQ(name(2), "org.example.Unlisted");
    EXPECT_EQ(name(99), "(none)");
    EXPECT_EQ(name(0), "(none)");
    EXPECT_EQ(name(-1), "(none)");
    entry("first", "mpv", "My player");
    EXPECT_EQ(name(12), "My player") << "the user's own entries come first";

    EXPECT_THAT(applicationIdsOf(12, base() / "proc"), ElementsAre("org.unknown", "mpv"));
    EXPECT_THAT(applicationIdsOf(99, base() / "proc"), IsEmpty());
    entry("second", "org.radio", "Radio");
    EXPECT_THAT(directory().applicationIds("Radio"), ElementsAre("com.example.Radio", "org.radio"));
    EXPECT_THAT(directory().applicationIds("mpv Media Player"), ElementsAre("mpv Media Player"))
        << "a hidden entry does not count";
    EXPECT_EQ(directory().applicationName("org.radio"), "Radio");
    EXPECT_EQ(directory().applicationName("../radio"), "../radio");
}

TEST_F(LinuxProcessDirectoryTest, IsNotLedAstray) {
    const auto hostile = process(10, "/usr/bin/mpv");
    writeText(hostile / "root/.flatpak-info", "[Application]\nname=../../../etc/passwd\n");
    EXPECT_EQ(name(10), "mpv Media Player");
    const auto piped = process(11, "/usr/bin/mpv");
    mkfifo((piped / "root/.flatpak-info").c_str(), 0600);
    EXPECT_EQ(name(11), "mpv Media Player") << "a pipe must not block";
    const auto huge = process(12, "/usr/bin/mpv");
    writeText(huge / "root/.flatpak-info", std::string(1 << 20, '['));
    EXPECT_EQ(name(12), "mpv Media Player");
    entry("first", "mpv", "\\n\x1b" + std::string(2'000, 'x'));
    EXPECT_EQ(name(12), std::string(79, 'x') + "…");
    writeText(process(13, "") / "comm", "\n");
    EXPECT_EQ(name(13), "");
}

TEST(LinuxProcessDirectory, KnowsThisProcess) {
    const LinuxProcessDirectory directory(DesktopEntries({}, ""));
    EXPECT_EQ(directory.ownProcessId(), getpid());
    const auto self = directory.runningApplication(getpid());
    ASSERT_TRUE(self);
    EXPECT_FALSE(self->localisedName.empty());
}

}  // namespace
}  // namespace sordin
