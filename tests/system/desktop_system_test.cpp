// SPDX-License-Identifier: MIT
// The whole program on a desktop: a display, a window manager, a session bus, a panel, and mouse input.
#include "platform/linux/session/dbus_menu.h"
#include "system/private_display.h"
#include "system/session_fixture.h"
#include "system/x11_windows.h"

namespace sordin {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;
using testing::SizeIs;

class DesktopTest : public SessionTest {
protected:
    static constexpr int panelWidth = 290;
    static constexpr int mainWidth = 860;

    DesktopTest() {
        display.clear();
        screen.emplace();
        windowManager.emplace(std::vector<std::string>{"openbox"}, ChildOptions{.log = home / "openbox"});
        const auto manages = [this] { return tool({"xprop", "-root", "_NET_SUPPORTING_WM_CHECK"}); };
        waitUntil([&] { return manages().find("window id") != std::string::npos; }, deadline);
    }
    ~DesktopTest() override { program.reset(); }

    void clickIcon(int x, int y) {
        static_cast<void>(ask("/StatusNotifierItem", "org.kde.StatusNotifierItem", "Activate", {x, y}));
    }
    /// Chooses a menu entry by its text; throws if it does not exist.
    void choose(const QString& text) {
        const auto answer =
            ask(DbusMenu::path, "com.canonical.dbusmenu", "GetLayout", {0, -1, QStringList()});
        const auto layout = qdbus_cast<MenuLayout>(answer.arguments().value(1));
        for (const QVariant& child : layout.children) {
            const auto entry = qdbus_cast<MenuLayout>(child);
            if (entry.properties.value("label") == text) {
                static_cast<void>(ask(DbusMenu::path, "com.canonical.dbusmenu", "Event",
                                      {entry.id, "clicked", QVariant::fromValue(QDBusVariant(0)), 0U}));
                return;
            }
        }
        throw std::runtime_error("the menu has no " + text.toStdString());
    }

    std::string tool(std::vector<std::string> command) const {
        return outputOf(std::move(command), home / "tools").value_or("");
    }
    /// The program's visible windows with this width.
    [[nodiscard]] std::vector<ShownWindow> shown(int width) const {
        auto all = X11Display(home / "tools").windows();
        std::erase_if(all, [&](const ShownWindow& window) { return window.place.width() != width; });
        return all;
    }
    [[nodiscard]] bool isShown(int width) const { return !shown(width).empty(); }
    [[nodiscard]] bool isActive(const ShownWindow& window) const {
        return X11Display(home / "tools").isActive(window);
    }
    bool mainComes() {
        return comes([&] {
            const auto windows = shown(mainWidth);
            return windows.size() == 1 && isActive(windows[0]);
        });
    }
    void click(QPoint at) const {
        tool({"xdotool", "mousemove", std::to_string(at.x()), std::to_string(at.y()), "click", "1"});
    }
    void press(const std::string& key) const { tool({"xdotool", "key", key}); }
    std::optional<PrivateDisplay> screen;
    std::optional<ChildProcess> windowManager;
};

TEST_F(DesktopTest, TheFirstStartShowsTheGuideEvenAtLogin) {
    writeText(home / "config/Sordin/defaults.json", "{}");
    startProgram();
    ASSERT_TRUE(mainComes()) << log();
    press("ctrl+q");
    EXPECT_TRUE(quits()) << "quitting works from the guide, too";
    startProgram({"--hidden"});
    ASSERT_TRUE(mainComes()) << log();
    EXPECT_EQ(log().find("listening"), std::string::npos);
    press("Escape");
    EXPECT_TRUE(comes([&] {
        press("Return");
        return log().find("status: listening") != std::string::npos;
    })) << log();
    EXPECT_TRUE(becomesSetting("onboarded", true));
    press("ctrl+q");
    EXPECT_TRUE(quits());
}

TEST_F(DesktopTest, TheIconOpensThePanelAndThatTheWindow) {
    startHidden();
    EXPECT_FALSE(isShown(mainWidth));
    EXPECT_EQ(itemProperty("IconName"), "org.sordin.Sordin-listening-symbolic");
    const auto icons = itemProperty("IconThemePath").toStdString();
    EXPECT_TRUE(
        std::filesystem::exists(icons + "/hicolor/symbolic/apps/org.sordin.Sordin-listening-symbolic.svg"))
        << icons;
    for (int i = 0; i < 2; ++i) {
        panel.reset();
        showPanel();
        ASSERT_TRUE(comes([&] { return panel->items().size() == 1; })) << "a panel that restarts";
    }

    clickIcon(640, 10);
    ASSERT_TRUE(comes([&] { return isShown(panelWidth); })) << log();
    const auto opened = shown(panelWidth).at(0).place;
    EXPECT_EQ(opened.x() + opened.width() / 2, 640);
    EXPECT_GT(opened.y(), 10);
    EXPECT_LT(opened.y(), 40);
    click({100, 700});
    EXPECT_TRUE(comes([&] { return !isShown(panelWidth); })) << "a click elsewhere closes the panel";

    // With the keyboard: from the switch over the slider to the first button.
    ASSERT_TRUE(comes([&] {
        clickIcon(1270, 790);
        return isShown(panelWidth);
    }));
    const auto corner = shown(panelWidth).at(0);
    EXPECT_TRUE(QRect(0, 0, 1280, 800).contains(corner.place));
    ASSERT_TRUE(comes([&] { return tool({"xdotool", "getwindowfocus"}) == corner.id + "\n"; }));
    press("Tab");
    press("space");
    EXPECT_TRUE(becomesSetting("enabled", false)) << log();
    EXPECT_TRUE(comes([&] { return itemProperty("IconName") == "org.sordin.Sordin-paused-symbolic"; }));
    press("Tab");
    press("Home");
    EXPECT_TRUE(becomesSetting("sensitivity", 0.0));
    click(corner.place.bottomLeft() + QPoint(50, -25));
    ASSERT_TRUE(mainComes()) << "Open Sordin";
    EXPECT_THAT(tool({"xprop", "-id", shown(mainWidth).at(0).id, "_NET_WM_ICON"}), HasSubstr("48 x 48"));
    EXPECT_FALSE(isShown(panelWidth));

    press("alt+F4");
    EXPECT_TRUE(comes([&] { return !isShown(mainWidth); }));
    EXPECT_TRUE(program->running());
    ASSERT_TRUE(comes([&] {
        clickIcon(640, 790);
        return isShown(panelWidth);
    }));
    click(shown(panelWidth).at(0).place.bottomRight() + QPoint(-39, -25));
    EXPECT_TRUE(quits()) << "Quit";
}

TEST_F(DesktopTest, ASecondStartBringsTheFirstForward) {
    startHidden();
    EXPECT_EQ(secondStart({"--hidden"}), 0);
    EXPECT_FALSE(isShown(mainWidth)) << "a start at login opens no window";
    EXPECT_EQ(secondStart(), 0);
    ASSERT_TRUE(mainComes());
    ChildProcess other({"xev", "-name", "other"}, {.log = home / "xev"});
    ASSERT_TRUE(comes([&] { return !isActive(shown(mainWidth).at(0)); })) << "another window is in front";
    EXPECT_EQ(secondStart(), 0);
    EXPECT_TRUE(mainComes());
    EXPECT_THAT(shown(mainWidth), SizeIs(1));
    EXPECT_TRUE(endsBy(SIGTERM)) << "an open window does not delay the end";
}

TEST_F(DesktopTest, WithoutAPanelTheWindowStaysWithinReach) {
    listen();
    ASSERT_TRUE(mainComes()) << log();
    const auto window = shown(mainWidth).at(0);
    const auto isMinimised = [&] {
        return tool({"xprop", "-id", window.id, "WM_STATE"}).find("Iconic") != std::string::npos;
    };
    // A window that is closed at the moment it appears may still come to the front afterwards.
    EXPECT_TRUE(comes([&] {
        press("alt+F4");
        return comes(isMinimised, 1s);
    }));
    EXPECT_EQ(secondStart(), 0);
    EXPECT_TRUE(mainComes());
    press("ctrl+q");
    EXPECT_TRUE(quits());
}

TEST_F(DesktopTest, TheMenuWorksInAnAd) {
    startHidden();
    play(pieces() / "ads.wav");
    ASSERT_TRUE(says("an ad began")) << log();
    ASSERT_TRUE(becomes(0));
    EXPECT_EQ(itemProperty("IconName"), "org.sordin.Sordin-muting-symbolic");
    choose("Restore Volume");
    EXPECT_TRUE(becomes(1));
    EXPECT_EQ(itemProperty("IconName"), "org.sordin.Sordin-muting-symbolic") << "the ad continues";
    choose("Start at Login");
    EXPECT_TRUE(std::filesystem::exists(home / "config/autostart/org.sordin.Sordin.desktop"));
    choose("Show Panel");
    EXPECT_TRUE(comes([&] { return isShown(panelWidth); }));
    choose("Open Sordin");
    EXPECT_TRUE(mainComes());
    static_cast<void>(ask("/StatusNotifierItem", "org.kde.StatusNotifierItem", "SecondaryActivate", {1, 1}));
    EXPECT_TRUE(becomesSetting("enabled", false)) << "a click of the middle button pauses";
    EXPECT_FALSE(recordIsThere());
    choose("Quit");
    EXPECT_TRUE(quits());
}

TEST_F(DesktopTest, LosingTheDisplayOrTheBusLeavesNoVolumeDown) {
    enterAd();
    ASSERT_TRUE(mainComes());
    screen->kill();
    EXPECT_TRUE(comes([&] { return !program->running(); })) << log();
    EXPECT_TRUE(comesBackWhole()) << "the guard restores if the program cannot";
    player.reset();

    windowManager.reset();
    screen.emplace();
    enterAd();
    bus.reset();  // simulates the end of the session
    screen->kill();
    EXPECT_TRUE(waitUntil([&] { return !program->running(); }, deadline)) << log();
    EXPECT_TRUE(comesBackWhole());
}

TEST_F(DesktopTest, ADisplayThatIsNotThereIsSaidAndLosingTheCompositorLeavesNoVolumeDown) {
    display = {"DISPLAY=:12345", "WAYLAND_DISPLAY="};
    startProgram();
    EXPECT_EQ(program->wait(deadline), 1);
    EXPECT_THAT(log(), HasSubstr("cannot open the display :12345"));

    const std::string socket = "sordin-test";
    ChildProcess compositor({"weston", "--backend=headless-backend.so", "--socket=" + socket, "--idle-time=0",
                             "--use-pixman", "--no-config", "--width=1280", "--height=800"},
                            {.log = home / "weston"});
    const auto file = std::getenv("XDG_RUNTIME_DIR") / std::filesystem::path(socket);
    ASSERT_TRUE(waitUntil([&] { return exists(file); }, deadline)) << contentsOf(home / "weston");
    display = {"DISPLAY=", "WAYLAND_DISPLAY=" + socket, "XDG_SESSION_TYPE=wayland"};
    showPanel();
    startProgram();
    ASSERT_TRUE(comes([&] { return log().find("the window is drawn") != std::string::npos; })) << log();
    play(pieces() / "ads.wav");
    ASSERT_TRUE(says("an ad began")) << log();
    ASSERT_TRUE(becomes(0));
    ASSERT_TRUE(comes([&] { return !panel->items().empty(); }));
    clickIcon(640, 10);
    clickIcon(640, 10);
    EXPECT_TRUE(program->running()) << log();
    compositor.kill(SIGKILL);
    EXPECT_TRUE(comes([&] { return !program->running(); })) << log();
    EXPECT_TRUE(comesBackWhole());
}

TEST_F(DesktopTest, AssistiveTechnologyReachesAndHearsEverything) {
    bus->offer("/usr/share/dbus-1/services/org.a11y.Bus.service");
    const auto readerRuns = [this](bool runs) {
        return call("org.a11y.Bus", "/org/a11y/bus", "org.freedesktop.DBus.Properties", "Set",
                    {"org.a11y.Status", "ScreenReaderEnabled", QVariant::fromValue(QDBusVariant(runs))})
            .errorMessage();
    };
    ASSERT_EQ(readerRuns(false), "");
    listen();
    ASSERT_TRUE(mainComes());
    ASSERT_EQ(readerRuns(true), "") << "the screen reader starts after the program";
    ChildProcess user({"/usr/bin/python3", SORDIN_USER}, {.log = home / "user"});
    ASSERT_TRUE(comes([&] { return !user.running(); }, 120s));
    EXPECT_EQ(user.wait(0s), 0) << contentsOf(home / "user");
    EXPECT_TRUE(becomesSetting("enabled", false));
    EXPECT_TRUE(becomesSetting("sensitivity", 0.9));
    EXPECT_TRUE(becomesSetting("transcription", false));
    EXPECT_TRUE(becomesSetting("onboarded", false));
}

}  // namespace
}  // namespace sordin
