// SPDX-License-Identifier: MIT
#include "platform/linux/desktop/frontmost_window.h"
#include "system/private_display.h"

#include <gtest/gtest.h>

#include <string_view>
#include <xcb/xcb.h>

namespace sordin {
namespace {

/// A program with a window, and the properties that a window manager would set.
class WindowedProgram {
public:
    WindowedProgram() : connection_(xcb_connect(nullptr, nullptr)) {
        const auto* screen = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
        root_ = screen->root;
        window_ = xcb_generate_id(connection_);
        xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window_, root_, 0, 0, 10, 10, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, screen->root_visual, 0, nullptr);
    }
    ~WindowedProgram() { xcb_disconnect(connection_); }
    WindowedProgram(const WindowedProgram&) = delete;
    WindowedProgram& operator=(const WindowedProgram&) = delete;

    void setActiveWindow(xcb_window_t window) { set(root_, "_NET_ACTIVE_WINDOW", XCB_ATOM_WINDOW, window); }
    void claimProcess(std::uint32_t process) { set(window_, "_NET_WM_PID", XCB_ATOM_CARDINAL, process); }
    [[nodiscard]] xcb_window_t window() const { return window_; }

private:
    void set(xcb_window_t window, std::string_view property, xcb_atom_t type, std::uint32_t value) {
        const auto asked =
            xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(property.size()), property.data());
        auto* atom = xcb_intern_atom_reply(connection_, asked, nullptr);
        const auto done = xcb_change_property_checked(connection_, XCB_PROP_MODE_REPLACE, window, atom->atom,
                                                      type, 32, 1, &value);
        std::free(atom);
        EXPECT_EQ(xcb_request_check(connection_, done), nullptr);
    }

    xcb_connection_t* connection_;
    xcb_window_t root_ = 0;
    xcb_window_t window_ = 0;
};

TEST(FrontmostWindow, IsThatOfTheActiveWindowOnX11Only) {
    unsetenv("DISPLAY");
    EXPECT_FALSE(frontmostWindowProcess());
    PrivateDisplay display;
    EXPECT_FALSE(frontmostWindowProcess()) << "no window is active yet";
    WindowedProgram program;
    program.claimProcess(2);  // like a sandboxed program, whose process ids start at 1
    program.setActiveWindow(program.window());
    EXPECT_EQ(frontmostWindowProcess(), getpid()) << "the server's process id takes precedence";
    program.setActiveWindow(0x7FFFFF);  // no longer exists
    EXPECT_FALSE(frontmostWindowProcess());
    program.setActiveWindow(0);
    EXPECT_FALSE(frontmostWindowProcess());
    program.setActiveWindow(program.window());
    setenv("WAYLAND_DISPLAY", "wayland-0", 1);
    EXPECT_FALSE(frontmostWindowProcess());
    unsetenv("WAYLAND_DISPLAY");
    setenv("XDG_SESSION_TYPE", "wayland", 1);
    EXPECT_FALSE(frontmostWindowProcess());
    unsetenv("XDG_SESSION_TYPE");
    display.kill();
    EXPECT_FALSE(frontmostWindowProcess());
}

}  // namespace
}  // namespace sordin
