// SPDX-License-Identifier: MIT
// The whole program in a real Plasma, on X11 and on Wayland. The place and the text of the icon come from the
// accessibility interface.
#include "system/real_desktop_fixture.h"

#include <QDBusMetaType>

namespace sordin {
namespace {

using namespace std::chrono_literals;

class PlasmaTest : public RealDesktopTest, public testing::WithParamInterface<SessionType> {
protected:
    void SetUp() override {
        if (!longSeries()) {
            GTEST_SKIP() << "a part of the long series";
        }
        for (const char* service :
             {"org.a11y.Bus", "org.freedesktop.portal.Desktop", "org.freedesktop.impl.portal.PermissionStore",
              "org.freedesktop.impl.portal.desktop.kde", "org.kde.ActivityManager"}) {
            bus->offer("/usr/share/dbus-1/services/" + std::string(service) + ".service");
        }
        // Only Plasma's portal services: the portal would wait in vain for those of other desktops.
        std::filesystem::create_directories(home / "portals");
        std::filesystem::copy("/usr/share/xdg-desktop-portal/portals/kde.portal",
                              home / "portals/kde.portal");
        writeText(home / "config/kdeglobals", "[KDE]\nAnimationDurationFactor=0\n");
        startDesktop();
    }
    ~PlasmaTest() override {
        program.reset();
        if (HasFailure()) {
            std::fprintf(stderr, "Plasma:\n%s", contentsOf(home / "desktop").c_str());
        }
    }

    void startDesktop() final {
        display = {"HOME=" + home.path().string(),
                   "XDG_CONFIG_HOME=" + (home / "config").string(),
                   "XDG_DATA_HOME=" + (home / "data").string(),
                   "XDG_CACHE_HOME=" + (home / "cache").string(),
                   "XDG_DESKTOP_PORTAL_DIR=" + (home / "portals").string(),
                   "XDG_CURRENT_DESKTOP=KDE",
                   "KDE_FULL_SESSION=true",
                   "KDE_SESSION_VERSION=5",
                   "QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1",
                   "LIBGL_ALWAYS_SOFTWARE=1",
                   "DBUS_SYSTEM_BUS_ADDRESS=" + bus->address()};
        if (GetParam() == SessionType::x11) {
            start(windowManager, {"kwin_x11"}, {"KWIN_COMPOSE=N"});
            display.insert(display.end(),
                           {"XDG_SESSION_TYPE=x11", "DISPLAY=" + std::string(std::getenv("DISPLAY"))});
        } else {
            startCompositor();
        }
        QMap<QString, QString> environment;
        for (const std::string& entry : display) {
            const auto split = entry.find('=');
            environment.insert(QString::fromStdString(entry.substr(0, split)),
                               QString::fromStdString(entry.substr(split + 1)));
        }
        qDBusRegisterMetaType<QMap<QString, QString>>();
        static_cast<void>(call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                               "UpdateActivationEnvironment", {QVariant::fromValue(environment)}));
        start(tray, {"kded5"});
        startShell();
    }
    void startShell() {
        start(shell, {"plasmashell"});
        const bool shows = comes([&] {
            const auto reply = call("org.kde.StatusNotifierWatcher", "/StatusNotifierWatcher",
                                    "org.freedesktop.DBus.Properties", "Get",
                                    {"org.kde.StatusNotifierWatcher", "IsStatusNotifierHostRegistered"});
            return reply.arguments().value(0).value<QDBusVariant>().variant().toBool();
        });
        if (!shows) {
            throw std::runtime_error("Plasma does not start:\n" + contentsOf(home / "desktop"));
        }
    }
    /// Starts KWin with its Xwayland.
    void startCompositor() {
        // The installed program has a file capability, so containers cannot run it.
        std::filesystem::copy("/usr/bin/kwin_wayland", home / "kwin_wayland");
        const std::filesystem::path variable = home / "display-of-xwayland";
        start(windowManager,
              {home / "kwin_wayland", "--x11-display", std::getenv("DISPLAY"), "--width", "1280", "--height",
               "800", "--xwayland", "--socket", "sordin-test", "--no-lockscreen", "--no-global-shortcuts",
               "sh -c 'echo $DISPLAY >" + variable.string() + "'"},
              {});
        if (!comes([&] { return contentsOf(variable).ends_with('\n'); })) {
            throw std::runtime_error("KWin does not start:\n" + contentsOf(home / "desktop"));
        }
        const std::string name = contentsOf(variable);
        display.insert(display.end(), {"XDG_SESSION_TYPE=wayland", "WAYLAND_DISPLAY=sordin-test",
                                       "DISPLAY=" + name.substr(0, name.size() - 1)});
    }
    void start(std::optional<ChildProcess>& part, const std::vector<std::string>& command,
               const std::vector<std::string>& environment = {}) {
        part.reset();
        ChildOptions options{.environment = display, .log = home / "desktop"};
        options.environment.insert(options.environment.end(), environment.begin(), environment.end());
        part.emplace(command, options);
    }

    /// "X Y WIDTH HEIGHT TEXT" of the icon; empty while the icon is not visible.
    std::istringstream inTray() {
        std::vector<std::string> command{"env"};
        command.insert(command.end(), display.begin(), display.end());
        command.insert(command.end(), {"/usr/bin/python3", SORDIN_FIND_IN_TRAY, "plasmashell", "Sordin"});
        return std::istringstream(outputOf(command, home / "tools", 30s).value_or(""));
    }
    QRect icon() final {
        int x = 0;
        int y = 0;
        int width = 0;
        int height = 0;
        inTray() >> x >> y >> width >> height;
        return {x, y, width, height};
    }
    std::string iconText() final {
        std::string text;
        std::getline(inTray(), text);
        return text;
    }
    void chooseOpenSordin() {
        EXPECT_TRUE(comes([&] {
            click(icon().center(), "3");
            // The accessibility interface does not contain the menu. Its first two enabled entries are
            // "Show Panel" and "Open Sordin".
            outputOf({"xdotool", "sleep", "1", "key", "Down", "Down", "Return"}, home / "tools");
            return comes([&] { return mainIsInFront(); }, 5s);
        }));
    }

    std::optional<ChildProcess> windowManager;
    std::optional<ChildProcess> tray;
    std::optional<ChildProcess> shell;
};

TEST_P(PlasmaTest, TheIconThePanelAndTheWindowAreWhereTheyBelong) {
    ASSERT_NO_FATAL_FAILURE(checkIconAndPanel());
    ASSERT_NO_FATAL_FAILURE(checkWindow([&] { chooseOpenSordin(); }));

    click({100, 600});  // away from the icon, which changes its color under the pointer
    const QRect place = icon();
    ASSERT_GT(lightness(place).background, 128);
    std::vector<std::string> scheme{"env"};
    scheme.insert(scheme.end(), display.begin(), display.end());
    scheme.insert(scheme.end(), {"plasma-apply-colorscheme", "BreezeDark"});
    ASSERT_TRUE(outputOf(scheme, home / "tools"));
    EXPECT_TRUE(comes([&] { return lightness(place).background < 128 && iconIsSeen(); }))
        << lightness(place).difference << " on " << lightness(place).background;

    startShell();
    EXPECT_TRUE(comes([&] { return icon().isValid(); })) << "a shell that was started anew";
    EXPECT_TRUE(endsBy(SIGTERM));
}

INSTANTIATE_TEST_SUITE_P(On, PlasmaTest, testing::Values(SessionType::x11, SessionType::wayland),
                         sessionName);

}  // namespace
}  // namespace sordin
