// SPDX-License-Identifier: MIT
#include "platform/linux/desktop/display.h"

#include "platform/linux/desktop/xcb_handles.h"

#include <cstdlib>
#include <string>

namespace sordin {

namespace {

/// None of this name only if the connection is gone.
xcb_atom_t atom(const XcbConnection& connection, const std::string& name) {
    const auto asked =
        xcb_intern_atom(connection.get(), 0, static_cast<std::uint16_t>(name.size()), name.c_str());
    const XcbReply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection.get(), asked, nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

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
    const XcbConnection connection(xcb_connect(nullptr, nullptr));
    return xcb_connection_has_error(connection.get()) == 0 ? DisplayState::reachable
                                                           : DisplayState::unreachable;
}

bool displayMixesWindows() {
    int screen = 0;
    const XcbConnection connection(xcb_connect(nullptr, &screen));
    if (xcb_connection_has_error(connection.get()) != 0) {
        return true;
    }
    // Whoever mixes them owns this selection (Extended Window Manager Hints).
    const auto selection = atom(connection, "_NET_WM_CM_S" + std::to_string(screen));
    const XcbReply<xcb_get_selection_owner_reply_t> owner(xcb_get_selection_owner_reply(
        connection.get(), xcb_get_selection_owner(connection.get(), selection), nullptr));
    return !owner || owner->owner != XCB_WINDOW_NONE;
}

void bringForward(std::uint32_t window) {
    const XcbConnection connection(xcb_connect(nullptr, nullptr));
    if (xcb_connection_has_error(connection.get()) != 0) {
        return;
    }
    // Extended Window Manager Hints: 2 says that the user has asked for it.
    constexpr std::uint32_t byTheUser = 2;
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = atom(connection, "_NET_ACTIVE_WINDOW");
    message.data.data32[0] = byTheUser;
    const auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection.get()));
    for (auto each = screens; each.rem > 0; xcb_screen_next(&each)) {
        xcb_send_event(connection.get(), 0, each.data->root,
                       XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                       reinterpret_cast<const char*>(&message));
    }
    xcb_flush(connection.get());
}

}  // namespace sordin
