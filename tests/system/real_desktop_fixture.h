// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/desktop/xcb_handles.h"
#include "system/private_display.h"
#include "system/session_fixture.h"
#include "system/x11_windows.h"

#include <algorithm>
#include <functional>

namespace sordin {

/// Where a desktop draws: on the X server of the test, or as a Wayland compositor in a window on it.
enum class SessionType { x11, wayland };

inline std::string sessionName(const testing::TestParamInfo<SessionType>& session) {
    return session.param == SessionType::x11 ? "X11" : "Wayland";
}

/// Runs the program in a real desktop on a virtual display and clicks with the mouse. A subclass starts its
/// desktop and locates the icon. By default, windows() reports the windows of X11 or Xwayland.
class RealDesktopTest : public SessionTest {
protected:
    struct Window {
        QRect place;  ///< without the title bar
        bool active = false;
        bool listed = false;  ///< in the task bar
        bool titled = false;
    };

    /// Starts or restarts the desktop, and returns when it can show icons. Sets `display` to the environment
    /// of programs in it. Throws std::runtime_error.
    virtual void startDesktop() = 0;
    /// The rectangle of the icon in pixels of the display; invalid while the icon is not visible.
    [[nodiscard]] virtual QRect icon() = 0;
    /// The text of the icon for screen readers.
    [[nodiscard]] virtual std::string iconText() = 0;
    [[nodiscard]] virtual std::vector<Window> windows() {
        const X11Display tools = windowTools();
        const std::string managed = tools.run({"xprop", "-root", "_NET_CLIENT_LIST"});
        std::vector<Window> all;
        for (const ShownWindow& window : tools.windows()) {
            const std::string hexId =
                (std::ostringstream() << "0x" << std::hex << std::stoul(window.id)).str();
            const std::string state = tools.run({"xprop", "-id", window.id, "_NET_WM_STATE"});
            const std::string frame = tools.run({"xprop", "-id", window.id, "_NET_FRAME_EXTENTS"});
            all.push_back({.place = window.place,
                           .active = tools.isActive(window),
                           .listed = managed.find(hexId) != std::string::npos &&
                                     state.find("SKIP_TASKBAR") == std::string::npos,
                           .titled = frame.find_first_of("123456789") != std::string::npos});
        }
        return all;
    }

    /// True if the icon contrasts with its background.
    [[nodiscard]] bool iconIsSeen() {
        const auto [background, difference] = lightness(icon());
        return difference > 80;
    }
    std::optional<Window> panelWindow() {
        return found([](const Window& window) { return window.place.width() == panelWidth; });
    }
    std::optional<Window> mainWindow() {
        return found([](const Window& window) { return window.listed && window.place.width() > panelWidth; });
    }
    [[nodiscard]] bool mainIsInFront() {
        const auto window = mainWindow();
        return window && window->active;
    }
    std::optional<Window> found(bool (*wanted)(const Window&)) {
        const auto all = windows();
        const auto window = std::find_if(all.begin(), all.end(), wanted);
        return window != all.end() ? std::optional(*window) : std::nullopt;
    }
    void click(QPoint at, const char* button = "1", int times = 1) {
        outputOf({"xdotool", "mousemove", std::to_string(at.x()), std::to_string(at.y()), "sleep", "0.3",
                  "click", "--repeat", std::to_string(times), "--delay", "60", button},
                 home / "tools");
    }

    struct Lightness {
        int background = 0;  ///< the median, 0 to 255
        int difference = 0;  ///< largest difference of a pixel from the background
    };
    /// Lightness of a part of the display.
    [[nodiscard]] static Lightness lightness(const QRect& part) {
        const XcbConnection connection(xcb_connect(nullptr, nullptr));
        const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection.get())).data->root;
        const XcbReply<xcb_get_image_reply_t> image(xcb_get_image_reply(
            connection.get(),
            xcb_get_image(connection.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, root, static_cast<int16_t>(part.x()),
                          static_cast<int16_t>(part.y()), static_cast<uint16_t>(part.width()),
                          static_cast<uint16_t>(part.height()), ~0U),
            nullptr));
        if (!image || !part.isValid()) {
            return {};
        }
        const std::uint8_t* pixel = xcb_get_image_data(image.get());
        std::vector<int> values;
        for (int i = 0; i < part.width() * part.height(); ++i, pixel += 4) {  // 24 bits in 32
            values.push_back((pixel[0] + 2 * pixel[1] + pixel[2]) / 4);
        }
        std::sort(values.begin(), values.end());
        const int median = values[values.size() / 2];
        return {median, std::max(median - values.front(), values.back() - median)};
    }

    /// Starts the program, and opens the panel with `clicks` on the icon.
    void checkIconAndPanel(int clicks = 1) {
        listen({"--hidden"});
        ASSERT_TRUE(comes([&] { return icon().isValid(); })) << log();
        EXPECT_TRUE(comes([&] { return iconText().find("Listening") != std::string::npos; })) << iconText();
        EXPECT_TRUE(comes([&] { return iconIsSeen(); })) << lightness(icon()).difference;
        setEnabled(false);
        EXPECT_TRUE(comes([&] { return iconText().find("Paused") != std::string::npos; })) << iconText();
        setEnabled(true);

        const QPoint at = icon().center();
        ASSERT_TRUE(comes([&] {
            click(at, "1", clicks);
            return comes([&] { return panelWindow().has_value(); }, std::chrono::seconds(5));
        })) << log();
        EXPECT_TRUE(comes([&] {
            const auto opened = panelWindow();
            const QRect place = opened ? opened->place : QRect();
            const int gap = std::max(place.top() - at.y(), at.y() - place.bottom());
            return place.left() <= at.x() && at.x() <= place.right() && gap > 0 && gap < 50;
        })) << "the panel is not at the icon";
        const auto all = windows();
        EXPECT_TRUE(std::none_of(all.begin(), all.end(), [](const Window& each) { return each.listed; }))
            << "the panel is in the task bar";
        click({100, 600});
        EXPECT_TRUE(comes([&] { return !panelWindow().has_value(); })) << "a click on the desktop closes it";
    }
    /// A second start and an entry of the icon's menu raise the main window.
    void checkWindow(const std::function<void()>& chooseOpenSordin) {
        EXPECT_EQ(secondStart(), 0);
        ASSERT_TRUE(comes([&] { return mainIsInFront(); })) << log();
        EXPECT_TRUE(comes([&] {
            const auto window = mainWindow();
            return window && window->titled;
        })) << "it has a title bar";
        const std::string id = windowTools().run({"xdotool", "getactivewindow"});
        windowTools().run({"xdotool", "windowminimize", id.substr(0, id.find('\n'))});
        ASSERT_TRUE(comes([&] { return !mainIsInFront(); }));
        chooseOpenSordin();
        EXPECT_TRUE(comes([&] { return mainIsInFront(); })) << log();
    }
    void setEnabled(bool enabled) {
        static_cast<void>(
            call("org.sordin.Sordin", "/org/sordin/Sordin", "org.freedesktop.DBus.Properties", "Set",
                 {"org.sordin.Sordin1", "Enabled", QVariant::fromValue(QDBusVariant(enabled))}));
    }

    /// Tools for the windows on the display of the desktop, not on that of the test.
    [[nodiscard]] X11Display windowTools() const { return X11Display(home / "tools", display); }

    static constexpr int panelWidth = 290;
    const PrivateDisplay screen;
};

}  // namespace sordin
