// SPDX-License-Identifier: MIT
// The whole program in a real GNOME Shell, on X11 and on Wayland. The tests query the shell's screen.
#include "system/private_display.h"
#include "system/session_fixture.h"

#include <QRect>

namespace sordin {
namespace {

using namespace std::chrono_literals;
using nlohmann::json;

enum class Session { x11, wayland };

class GnomeTest : public SessionTest, public testing::WithParamInterface<Session> {
protected:
    GnomeTest() {
        display = {"XDG_CURRENT_DESKTOP=GNOME"};
        // Settings in a file need no other service.
        std::filesystem::create_directories(home / "config/glib-2.0/settings");
        writeText(home / "config/glib-2.0/settings/keyfile",
                  "[org/gnome/shell]\nwelcome-dialog-last-shown-version='99'\n"
                  "enabled-extensions=['ubuntu-appindicators@ubuntu.com']\n");
        startShell();
    }
    ~GnomeTest() override {
        program.reset();
        if (HasFailure()) {
            std::fprintf(stderr, "GNOME Shell:\n%s", contentsOf(home / "shell").c_str());
        }
    }

    void startShell() {
        const bool wayland = GetParam() == Session::wayland;
        std::vector<std::string> command{"gnome-shell", "--unsafe-mode"};
        if (wayland) {
            command.insert(command.end(), {"--nested", "--wayland", "--wayland-display=sordin-test"});
        } else {
            command.emplace_back("--x11");
        }
        shell.reset();
        shell.emplace(
            command,
            ChildOptions{.environment = {"HOME=" + home.path().string(),
                                         "XDG_CONFIG_HOME=" + (home / "config").string(),
                                         "XDG_DATA_HOME=" + (home / "data").string(),
                                         "GSETTINGS_BACKEND=keyfile", "XDG_CURRENT_DESKTOP=GNOME",
                                         "GNOME_SHELL_SESSION_MODE=user",
                                         "MUTTER_DEBUG_DUMMY_MODE_SPECS=1280x800", "LIBGL_ALWAYS_SOFTWARE=1",
                                         "DBUS_SYSTEM_BUS_ADDRESS=" + bus->address()},
                         .log = home / "shell"});
        if (!becomesTrue("Main.layoutManager._startingUp === false")) {
            throw std::runtime_error("GNOME Shell does not start:\n" + contentsOf(home / "shell"));
        }
        eval("Main.overview.hide()");
        // Notifications would cover the top bar and receive the clicks.
        eval("Main.messageTray.bannerBlocked = true");
        if (wayland) {
            display = {"XDG_CURRENT_DESKTOP=GNOME", "XDG_SESSION_TYPE=wayland", "WAYLAND_DISPLAY=sordin-test",
                       "DISPLAY=" + shellVariable("DISPLAY"), "XAUTHORITY=" + shellVariable("XAUTHORITY")};
        }
    }
    /// An environment variable that the shell passes to its programs.
    std::string shellVariable(const std::string& name) {
        return eval("imports.gi.GLib.getenv('" + name + "')").get<std::string>();
    }

    /// The value of an expression in the shell; null if it fails.
    json eval(const std::string& expression) {
        const auto reply = call("org.gnome.Shell", "/org/gnome/Shell", "org.gnome.Shell", "Eval",
                                {QString::fromStdString(expression)});
        return json::parse(reply.arguments().value(1).toString().toStdString(), nullptr, false);
    }
    bool becomesTrue(const std::string& expression) {
        return comes([&] { return eval(expression) == true; });
    }
    /// The middle of an actor of the shell, in screen pixels. Throws if the actor is not laid out in time.
    QPoint middle(const std::string& actor) {
        json place;
        // Before the layout, coordinates are NaN, which become null.
        const bool laidOut = comes([&] {
            place =
                eval("(a => a.get_transformed_position().concat(a.get_transformed_size()))(" + actor + ")");
            return place.is_array() && place[0].is_number() && place[2] > 0;
        });
        if (!laidOut) {
            throw std::runtime_error("the shell does not show " + actor);
        }
        const auto number = [&](std::size_t i) { return place[i].get<double>(); };
        return {static_cast<int>(number(0) + number(2) / 2), static_cast<int>(number(1) + number(3) / 2)};
    }
    void click(QPoint at, const char* button = "1", int times = 1) {
        outputOf({"xdotool", "mousemove", std::to_string(at.x()), std::to_string(at.y()), "sleep", "0.3",
                  "click", "--repeat", std::to_string(times), "--delay", "60", button},
                 home / "tools");
    }
    /// The place of the program's window with this width; invalid if it is not visible.
    QRect shown(int width) {
        const json place = eval("(w => w ? [w.x, w.y, w.width, w.height] : null)"
                                "(global.get_window_actors().filter(a => a.visible).map(a => a.meta_window)"
                                ".filter(w => w.title === 'Sordin').map(w => w.get_frame_rect())"
                                ".find(r => r.width === " +
                                std::to_string(width) + "))");
        return place.is_array() ? QRect(place[0], place[1], place[2], place[3]) : QRect();
    }

    static constexpr int panelWidth = 290;
    const std::string icon = "Main.panel.statusArea[Object.keys(Main.panel.statusArea)"
                             ".find(k => k.startsWith('appindicator'))]";
    const std::string mainIsInFront = "global.display.focus_window?.title === 'Sordin'"
                                      " && !global.display.focus_window.skip_taskbar";
    const PrivateDisplay screen;
    std::optional<ChildProcess> shell;
};

TEST_P(GnomeTest, TheIconThePanelAndTheWindowAreWhereTheyBelong) {
    listen({"--hidden"});
    ASSERT_TRUE(becomesTrue(icon + " !== undefined")) << log();
    EXPECT_TRUE(becomesTrue(icon + ".accessible_name === 'Sordin: Listening'"));
    const QPoint at = middle(icon);
    ASSERT_TRUE(comes([&] {
        click(at, "1", 2);
        return comes([&] { return shown(panelWidth).isValid(); }, 5s);
    })) << log();
    const QRect place = shown(panelWidth);
    EXPECT_TRUE(place.left() <= at.x() && at.x() <= place.right()) << place.left() << ' ' << at.x();
    EXPECT_GT(place.top(), at.y());
    EXPECT_LT(place.top(), at.y() + 50);
    EXPECT_EQ(eval("global.get_window_actors().every(a => a.meta_window.skip_taskbar"
                   " || a.meta_window.is_override_redirect())"),
              true)
        << "the panel must not be in the list of windows";
    click({100, 700});
    EXPECT_TRUE(comes([&] { return !shown(panelWidth).isValid(); }))
        << "a click on the desktop closes the panel";

    EXPECT_EQ(secondStart(), 0);
    ASSERT_TRUE(becomesTrue(mainIsInFront)) << log();
    EXPECT_EQ(eval("global.display.focus_window.decorated"), true) << "the window has a title bar";

    eval("global.display.focus_window.minimize()");
    ASSERT_TRUE(becomesTrue("!(" + mainIsInFront + ")"));
    click(at, "3");
    const std::string entry = icon + ".menu._getMenuItems().find(i => i.label?.text === 'Open Sordin')";
    ASSERT_TRUE(becomesTrue(entry + "?.mapped === true"));
    // The menu grows while it opens.
    EXPECT_TRUE(comes([&] {
        click(middle(entry));
        return comes([&] { return eval(mainIsInFront) == true; }, 3s);
    }));

    if (GetParam() == Session::x11) {
        startShell();
        EXPECT_TRUE(becomesTrue(icon + " !== undefined")) << "the icon must appear in a restarted shell";
    }
    EXPECT_TRUE(endsBy(SIGTERM));
}

std::string nameOf(const testing::TestParamInfo<Session>& session) {
    return session.param == Session::x11 ? "X11" : "Wayland";
}
INSTANTIATE_TEST_SUITE_P(On, GnomeTest, testing::Values(Session::x11, Session::wayland), nameOf);

}  // namespace
}  // namespace sordin
