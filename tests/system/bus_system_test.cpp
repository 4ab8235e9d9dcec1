// SPDX-License-Identifier: MIT
// The whole program, controlled over the bus by scripts, shortcuts and the desktop.
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
        EXPECT_FALSE(isRunning()) << "the request starts no program";
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
    EXPECT_TRUE(comes([&] { return is("Status") == "ad"; })) << "the ad is still playing";
    EXPECT_TRUE(becomes(0)) << "a new start detects it as a new ad";
    EXPECT_EQ(secondStart({"--toggle", "--restore"}), 2);
    bus.reset();
    EXPECT_EQ(secondStart({"--toggle"}), 1) << contentsOf(home / "second");
}

TEST_F(BusSystemTest, ItsStatusIsPrintedForPanels) {
    EXPECT_EQ(secondStart({"--status"}), 1);
    EXPECT_EQ(contentsOf(home / "second"), "sordin: is not running\n");
    EXPECT_EQ(secondStart({"--json"}), 2);
    std::vector<std::string> command{"/usr/bin/env"};
    for (const std::string& variable : environment()) {
        command.push_back(variable);
    }
    command.insert(command.end(), {SORDIN_PROGRAM, "--status", "--follow"});
    ChildProcess follower(command, {.readOutput = true});
    EXPECT_EQ(follower.readLine(deadline), "Not running");
    enterAd();
    std::vector<std::string> lines;
    while (lines.empty() || !lines.back().starts_with("Ad detected, muted: ")) {
        const auto line = follower.readLine(deadline);
        ASSERT_TRUE(line) << "after " << lines.size();
        lines.push_back(*line);
    }
    EXPECT_THAT(lines, testing::Contains(testing::StartsWith("Listening, ")));
    EXPECT_EQ(secondStart({"--status", "--json"}), 0);
    EXPECT_THAT(contentsOf(home / "second"), testing::HasSubstr(R"("text":"Ad detected, muted")"));
    program.reset();
    do {
        lines.push_back(follower.readLine(deadline).value_or("Not running"));
    } while (lines.back() != "Not running");
    EXPECT_TRUE(follower.running()) << "the follower waits for another start";
    bus.reset();
    EXPECT_EQ(follower.wait(deadline), 1);

    bus.emplace();
    std::string shell = "{";
    for (const auto& word : command) {
        shell += " '" + word + "'";
    }
    ChildProcess pipe({"sh", "-c", shell + "; echo ended >&2; } | head -n 1"}, {.log = home / "pipe"});
    EXPECT_TRUE(comes([&] { return contentsOf(home / "pipe") == "Not running\nended\n"; }))
        << contentsOf(home / "pipe");
}

TEST_F(BusSystemTest, CallsAndChosenApplicationsAreLeftAlone) {
    enterAd();
    {
        const ChildProcess call({SORDIN_TONE_PLAYER, "440", "0.1", "role=Communication"},
                                {.writeInput = true});
        EXPECT_TRUE(becomes(1));
        EXPECT_TRUE(comes([&] { return is("Call") == "tone_player"; }));
        EXPECT_EQ(is("Status"), "listening");
        EXPECT_EQ(is("AdActive"), false);
    }
    EXPECT_TRUE(becomes(0)) << "the fade returns after the call";
    EXPECT_EQ(is("Call"), "");
    const auto set = [this](const QVariant& ids) {
        return call(id, path, "org.freedesktop.DBus.Properties", "Set",
                    {ControlInterface::name, "IgnoredApplications", QVariant::fromValue(QDBusVariant(ids))})
            .errorName();
    };
    EXPECT_EQ(set(QStringList{"pw-cat", "org.unknown"}), "");
    EXPECT_TRUE(becomesSetting("ignoredApplications", {"pw-cat", "org.unknown"}));
    EXPECT_TRUE(becomes(1));
    EXPECT_TRUE(comes([&] { return is("AdActive") == false; }));
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
        EXPECT_EQ(is("Enabled"), true) << "a start through the action must not switch it off";
        EXPECT_EQ(toggle().errorName(), "");
        EXPECT_EQ(is("Enabled"), false);
        kill(static_cast<pid_t>(process), SIGTERM);
        EXPECT_TRUE(comes([&] { return !isRunning(); }));
        EXPECT_TRUE(becomesSetting("enabled", false));
    }
}

}  // namespace
}  // namespace sordin
