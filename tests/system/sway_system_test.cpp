// SPDX-License-Identifier: MIT
// The whole program in a real Sway with Waybar. Sway reports the windows.
#include "system/real_desktop_fixture.h"

namespace sordin {
namespace {

using namespace std::chrono_literals;
using nlohmann::json;

class SwayTest : public RealDesktopTest {
protected:
    void SetUp() override {
        if (!longSeries()) {
            GTEST_SKIP() << "a part of the long series";
        }
        startDesktop();
    }
    ~SwayTest() override {
        program.reset();
        if (HasFailure()) {
            std::fprintf(stderr, "sway and waybar:\n%s", contentsOf(home / "desktop").c_str());
        }
    }

    void startDesktop() final {
        display = {"HOME=" + home.path().string(),
                   "XDG_CURRENT_DESKTOP=sway",
                   "XDG_SESSION_TYPE=wayland",
                   "WLR_BACKENDS=x11",
                   "WLR_RENDERER=pixman",
                   "SWAYSOCK=" + (home / "sway").string(),
                   "DBUS_SYSTEM_BUS_ADDRESS=" + bus->address()};
        writeText(home / "config/sway.conf",
                  "output * resolution 1280x800\ndefault_border normal\nxwayland disable\n");
        std::vector<std::string> command{"sway", "-c", home / "config/sway.conf"};
        if (geteuid() == 0) {  // Sway refuses to run as root
            command.insert(command.begin(), {"unshare", "--map-user=1000"});
        }
        sway.emplace(command, ChildOptions{.environment = display, .log = home / "desktop"});
        // The first socket name that it tries.
        display.insert(display.end(), {"WAYLAND_DISPLAY=wayland-1", "DISPLAY="});
        if (!comes([&] { return tree().is_object(); })) {
            throw std::runtime_error("sway does not start:\n" + contentsOf(home / "desktop"));
        }
        startBar("#202020");
    }
    void startBar(const std::string& color) {
        writeText(home / "config/bar",
                  R"({"height": 28, "modules-right": ["tray"], "tray": {"icon-size": 18}})");
        writeText(home / "config/bar.css",
                  "* {border: none} window#waybar, #tray {background: " + color + "}");
        bar.reset();
        bar.emplace(
            std::vector<std::string>{"waybar", "-c", home / "config/bar", "-s", home / "config/bar.css"},
            ChildOptions{.environment = display, .log = home / "desktop"});
    }

    json tree() {
        std::vector<std::string> command{"env"};
        command.insert(command.end(), display.begin(), display.end());
        command.insert(command.end(), {"swaymsg", "-r", "-t", "get_tree"});
        return json::parse(outputOf(command, home / "tools").value_or(""), nullptr, false);
    }
    void collect(const json& node, std::vector<Window>& all) {
        if (node.value("pid", json()) == program->pid() && node.value("visible", false)) {
            const json& place = node["rect"];
            all.push_back({.place = {place["x"], place["y"], place["width"], place["height"]},
                           .active = node["focused"],
                           .listed = node["type"] != "floating_con",
                           .titled = node["deco_rect"]["height"] > 0});
        }
        for (const char* branch : {"nodes", "floating_nodes"}) {
            for (const json& child : node.value(branch, json::array())) {
                collect(child, all);
            }
        }
    }
    std::vector<Window> windows() final {
        std::vector<Window> all;
        collect(tree(), all);
        return all;
    }

    /// The end of the bar, which contains only the icon.
    QRect icon() final {
        const QRect end(1256, 2, 22, 24);
        return lightness(end).difference > 10 ? end : QRect();
    }
    /// The bar offers no text to screen readers, so this is the text of the icon item.
    std::string iconText() final {
        return call("org.sordin.Sordin", "/StatusNotifierItem", "org.freedesktop.DBus.Properties", "Get",
                    {"org.kde.StatusNotifierItem", "IconAccessibleDesc"})
            .arguments()
            .value(0)
            .value<QDBusVariant>()
            .variant()
            .toString()
            .toStdString();
    }

    std::optional<ChildProcess> sway;
    std::optional<ChildProcess> bar;
};

TEST_F(SwayTest, TheIconIsSeenAndThePanelIsAtIt) {
    ASSERT_NO_FATAL_FAILURE(checkIconAndPanel());
    EXPECT_EQ(secondStart(), 0);
    EXPECT_TRUE(comes([&] {
        const auto window = mainWindow();
        return window && window->active && window->titled;
    })) << log();
    startBar("#f0f0f0");
    EXPECT_TRUE(comes([&] { return icon().isValid() && iconIsSeen(); })) << "on a light bar";
    EXPECT_TRUE(endsBy(SIGTERM));
}

}  // namespace
}  // namespace sordin
