// SPDX-License-Identifier: MIT
// The whole program, driven as scripts, keys and the desktop's menu drive it.
#include "platform/linux/audio/linux_audio.h"
#include "platform/linux/session/control_interface.h"
#include "platform/linux/session/status_notifier_item.h"
#include "system/private_display.h"
#include "system/session_fixture.h"

namespace sordin {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;

constexpr auto id = ApplicationService::id;
constexpr auto path = ApplicationService::path;
constexpr auto busName = "org.freedesktop.DBus";

class BusSystemTest : public SessionTest {
protected:
    [[nodiscard]] QVariant is(const char* name) {
        return call(id, path, "org.freedesktop.DBus.Properties", "Get", {ControlInterface::name, name})
            .arguments()
            .value(0)
            .value<QDBusVariant>()
            .variant();
    }
    bool becomesStatus(const char* status) {
        return comes([&] { return is("Status") == status; });
    }
    void enable(bool enabled) {
        const auto answer =
            call(id, path, "org.freedesktop.DBus.Properties", "Set",
                 {ControlInterface::name, "Enabled", QVariant::fromValue(QDBusVariant(enabled))});
        EXPECT_EQ(answer.errorName(), "");
    }
    [[nodiscard]] bool isRunning() {
        return call(busName, "/org/freedesktop/DBus", busName, "NameHasOwner", {id}).arguments() ==
               QVariantList{true};
    }
};

TEST_F(BusSystemTest, TheVolumeComesBackForTheRestOfAnAd) {
    listen();
    play(pieces() / "excerpt.wav");
    ASSERT_TRUE(becomesStatus("ad")) << log();
    ASSERT_TRUE(becomes(0));
    EXPECT_EQ(is("AdActive"), true);
    EXPECT_EQ(is("Faded"), true);
    EXPECT_THAT(is("Source").toString().toStdString(), HasSubstr("pw-"));
    EXPECT_GT(is("Confidence").toDouble(), 0.3);

    EXPECT_EQ(call(id, path, ControlInterface::name, "RestoreNow").errorName(), "");
    ASSERT_TRUE(becomes(1));
    const LinuxAudio audio;
    VolumeRecorder recorder(audio.objects());
    EXPECT_EQ(is("AdActive"), true);
    EXPECT_EQ(is("Faded"), false);
    ASSERT_TRUE(says("an ad ended", 0, 120s)) << log();
    EXPECT_EQ(is("AdActive"), false);
    EXPECT_EQ(is("Source"), "");
    const auto changes = recorder.changes();
    EXPECT_FALSE(changes.empty());
    for (const auto& change : changes) {
        EXPECT_EQ(change.volume, 1) << "in the ad, after " << change.time << " s";
    }
}

TEST_F(BusSystemTest, TheSwitchIsRememberedAndShown) {
    const PrivateDisplay screen;
    display.clear();
    startHidden();
    enable(false);
    EXPECT_TRUE(becomesSetting("enabled", false));
    EXPECT_TRUE(becomesStatus("off"));
    EXPECT_TRUE(comes([&] { return itemProperty("IconName") == "org.sordin.Sordin-paused-symbolic"; }));
    enable(true);
    EXPECT_TRUE(becomesSetting("enabled", true));
    EXPECT_TRUE(becomesStatus("listening")) << log();
    EXPECT_TRUE(comes([&] { return itemProperty("IconName") == "org.sordin.Sordin-listening-symbolic"; }));
    static_cast<void>(
        ask(StatusNotifierItem::path, "org.kde.StatusNotifierItem", "SecondaryActivate", {1, 1}));
    EXPECT_EQ(is("Enabled"), false) << "the middle button";
    program->kill(SIGTERM);
    EXPECT_EQ(program->wait(deadline), 0);
}

TEST_F(BusSystemTest, ASecondStartAsksTheFirst) {
    for (const auto* request : {"--restore-volume", "--toggle"}) {
        EXPECT_EQ(secondStart({request}), 1);
        EXPECT_FALSE(isRunning()) << "none is started";
    }
    EXPECT_EQ(contentsOf(home / "second"), "sordin: is not running\nsordin: is not running\n");

    enterAd();
    EXPECT_EQ(secondStart({"--restore-volume"}), 0);
    EXPECT_TRUE(becomes(1));
    EXPECT_EQ(is("AdActive"), true);
    EXPECT_EQ(secondStart({"--toggle"}), 0);
    EXPECT_EQ(is("Status"), "off");
    EXPECT_EQ(secondStart({"--toggle"}), 0);
    EXPECT_TRUE(becomesStatus("ad")) << "which still plays";
    EXPECT_TRUE(becomes(0)) << "and is another, for who listens anew";
    EXPECT_EQ(secondStart({"--toggle", "--restore"}), 2);
    bus.reset();
    EXPECT_EQ(secondStart({"--toggle"}), 1) << contentsOf(home / "second");
}

TEST_F(BusSystemTest, AnActionOfTheDesktopStartsTheProgram) {
    std::string exec = "/usr/bin/env";
    for (const std::string& variable : environment()) {
        exec += ' ' + variable;
    }
    const auto folder = std::filesystem::path(std::getenv("XDG_RUNTIME_DIR")) / "dbus-1/services";
    std::filesystem::create_directories(folder);
    writeText(folder / (std::string(id) + ".service"), "[D-BUS Service]\nName=" + std::string(id) +
                                                           "\nExec=" + exec +
                                                           " " SORDIN_PROGRAM " --hidden\n");
    openBus();
    for (const bool before : {false, true}) {
        writeText(home / "config/Sordin/defaults.json", before ? R"({"onboarded": true, "enabled": true})"
                                                               : R"({"onboarded": true, "enabled": false})");
        const auto toggle = [this] {
            return call(id, path, "org.freedesktop.Application", "ActivateAction",
                        {"ToggleEnabled", QVariantList(), QVariantMap{{"activation-token", "t"}}});
        };
        ASSERT_EQ(toggle().errorName(), "");
        const auto process =
            call(busName, "/org/freedesktop/DBus", busName, "GetConnectionUnixProcessID", {id})
                .arguments()
                .value(0)
                .toUInt();
        ASSERT_NE(process, 0U);
        EXPECT_EQ(is("Enabled"), true) << "who starts it so wants it to listen";
        EXPECT_EQ(toggle().errorName(), "");
        EXPECT_EQ(is("Enabled"), false);
        kill(static_cast<pid_t>(process), SIGTERM);
        EXPECT_TRUE(comes([&] { return !isRunning(); }));
        EXPECT_TRUE(becomesSetting("enabled", false));
    }
}

}  // namespace
}  // namespace sordin
