// SPDX-License-Identifier: MIT
// The whole program, driven as scripts, keys and the desktop drive it.
#include "platform/linux/session/control_interface.h"
#include "system/session_fixture.h"

namespace sordin {
namespace {

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
    [[nodiscard]] bool isRunning() {
        return call(busName, "/org/freedesktop/DBus", busName, "NameHasOwner", {id}).arguments() ==
               QVariantList{true};
    }
};

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
    EXPECT_TRUE(becomesSetting("enabled", false));
    EXPECT_EQ(secondStart({"--toggle"}), 0);
    EXPECT_TRUE(comes([&] { return is("Status") == "ad"; })) << "which still plays";
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
    const std::string name = id;
    const auto service = home / (name + ".service");
    writeText(service, "[D-BUS Service]\nName=" + name + "\nExec=" + exec + " " SORDIN_PROGRAM " --hidden\n");
    bus->offer(service);
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
