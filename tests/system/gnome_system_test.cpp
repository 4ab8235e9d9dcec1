// SPDX-License-Identifier: MIT
// The whole program in a real GNOME Shell, on X11 and on Wayland. The tests query the shell for the icon and
// its menu.
#include "system/real_desktop_fixture.h"

namespace sordin {
namespace {

using namespace std::chrono_literals;
using nlohmann::json;

class GnomeTest : public RealDesktopTest, public testing::WithParamInterface<SessionType> {
protected:
    GnomeTest() {
        display = {"XDG_CURRENT_DESKTOP=GNOME"};
        // Settings in a file need no other service.
        std::filesystem::create_directories(home / "config/glib-2.0/settings");
        writeText(home / "config/glib-2.0/settings/keyfile",
                  "[org/gnome/shell]\nwelcome-dialog-last-shown-version='99'\n"
                  "enabled-extensions=['ubuntu-appindicators@ubuntu.com']\n");
        startDesktop();
    }
    ~GnomeTest() override {
        program.reset();
        if (HasFailure()) {
            std::fprintf(stderr, "GNOME Shell:\n%s", contentsOf(home / "shell").c_str());
        }
    }

    void startDesktop() final {
        const bool wayland = GetParam() == SessionType::wayland;
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
    /// The rectangle of an actor of the shell, in screen pixels; invalid before its layout.
    QRect placeOf(const std::string& actor) {
        const json place = eval("(a => a ? a.get_transformed_position().concat(a.get_transformed_size()) : "
                                "null)(" +
                                actor + ")");
        // Before the layout, coordinates are NaN, which become null.
        if (!place.is_array() || !place[0].is_number()) {
            return {};
        }
        const auto number = [&](std::size_t i) { return static_cast<int>(place[i].get<double>()); };
        return {number(0), number(1), number(2), number(3)};
    }

    QRect icon() final { return placeOf(item); }
    std::string iconText() final { return eval(item + "?.accessible_name").dump(); }
    void chooseOpenSordin() {
        click(icon().center(), "3");
        const std::string entry = item + ".menu._getMenuItems().find(i => i.label?.text === 'Open Sordin')";
        ASSERT_TRUE(becomesTrue(entry + "?.mapped === true"));
        // The menu grows while it opens.
        EXPECT_TRUE(comes([&] {
            click(placeOf(entry).center());
            return comes([&] { return mainIsInFront(); }, 3s);
        }));
    }

    const std::string item = "Main.panel.statusArea[Object.keys(Main.panel.statusArea)"
                             ".find(k => k.startsWith('appindicator'))]";
    std::optional<ChildProcess> shell;
};

TEST_P(GnomeTest, TheIconThePanelAndTheWindowAreWhereTheyBelong) {
    ASSERT_NO_FATAL_FAILURE(checkIconAndPanel(2));
    ASSERT_NO_FATAL_FAILURE(checkWindow([&] { chooseOpenSordin(); }));
    if (GetParam() == SessionType::x11) {
        startDesktop();
        EXPECT_TRUE(comes([&] { return icon().isValid(); })) << "the icon must appear in a restarted shell";
    }
    EXPECT_TRUE(endsBy(SIGTERM));
}

INSTANTIATE_TEST_SUITE_P(On, GnomeTest, testing::Values(SessionType::x11, SessionType::wayland), sessionName);

}  // namespace
}  // namespace sordin
