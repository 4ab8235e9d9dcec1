// SPDX-License-Identifier: MIT
#include "platform/linux/desktop/display.h"

#include <cstdlib>
#include <memory>
#include <string>
#include <xcb/xcb.h>

namespace sordin {

namespace {

struct Free {
    // xcb allocates its replies so.
    // NOLINTNEXTLINE(cppcoreguidelines-no-malloc,cppcoreguidelines-owning-memory)
    void operator()(void* memory) const { std::free(memory); }
};
struct Disconnect {
    void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
};

bool named(const char* variable) {
    const char* value = std::getenv(variable);
    return value != nullptr && *value != '\0';
}

}  // namespace

DisplayState displayState() {
    if (named("WAYLAND_DISPLAY") || named("QT_QPA_PLATFORM")) {
        return DisplayState::reachable;
    }
    if (!named("DISPLAY")) {
        return DisplayState::none;
    }
    const std::unique_ptr<xcb_connection_t, Disconnect> connection(xcb_connect(nullptr, nullptr));
    return xcb_connection_has_error(connection.get()) == 0 ? DisplayState::reachable
                                                           : DisplayState::unreachable;
}

bool displayMixesWindows() {
    int screen = 0;
    const std::unique_ptr<xcb_connection_t, Disconnect> connection(xcb_connect(nullptr, &screen));
    if (xcb_connection_has_error(connection.get()) != 0) {
        return true;
    }
    // Whoever mixes them owns this selection (Extended Window Manager Hints).
    const std::string name = "_NET_WM_CM_S" + std::to_string(screen);
    const auto asked =
        xcb_intern_atom(connection.get(), 0, static_cast<std::uint16_t>(name.size()), name.c_str());
    const std::unique_ptr<xcb_intern_atom_reply_t, Free> atom(
        xcb_intern_atom_reply(connection.get(), asked, nullptr));
    if (!atom) {
        return true;
    }
    const std::unique_ptr<xcb_get_selection_owner_reply_t, Free> owner(xcb_get_selection_owner_reply(
        connection.get(), xcb_get_selection_owner(connection.get(), atom->atom), nullptr));
    return !owner || owner->owner != XCB_WINDOW_NONE;
}

}  // namespace sordin
