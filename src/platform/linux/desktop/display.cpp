// SPDX-License-Identifier: MIT
#include "platform/linux/desktop/display.h"

#include "platform/linux/desktop/xcb_handles.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <string>

namespace sordin {

namespace {

/// Returns XCB_ATOM_NONE only if the connection is lost.
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
    // A compositing manager owns this selection (Extended Window Manager Hints).
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
    // Source indication 2 of the Extended Window Manager Hints: a direct user action.
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

void hideFromTaskBar(std::uint32_t window) {
    const XcbConnection connection(xcb_connect(nullptr, nullptr));
    if (xcb_connection_has_error(connection.get()) != 0) {
        return;
    }
    const auto states = {atom(connection, "_NET_WM_STATE_SKIP_TASKBAR"),
                         atom(connection, "_NET_WM_STATE_SKIP_PAGER")};
    const auto done = xcb_change_property_checked(connection.get(), XCB_PROP_MODE_APPEND, window,
                                                  atom(connection, "_NET_WM_STATE"), XCB_ATOM_ATOM, 32,
                                                  static_cast<std::uint32_t>(states.size()), states.begin());
    // Waits for the server.
    const XcbReply<xcb_generic_error_t> error(xcb_request_check(connection.get(), done));
}

void makeTransparent(std::uint32_t window) {
    const XcbConnection connection(xcb_connect(nullptr, nullptr));
    if (xcb_connection_has_error(connection.get()) != 0) {
        return;
    }
    constexpr std::uint32_t transparent = 0;
    const auto done =
        xcb_change_window_attributes_checked(connection.get(), window, XCB_CW_BACK_PIXEL, &transparent);
    // Waits for the server.
    const XcbReply<xcb_generic_error_t> error(xcb_request_check(connection.get(), done));
}

void endStartupNotification(std::string_view token) {
    const XcbConnection connection(xcb_connect(nullptr, nullptr));
    if (xcb_connection_has_error(connection.get()) != 0 || token.find('\0') != std::string_view::npos) {
        return;
    }
    std::string text = "remove: ID=\"";
    for (const char each : token) {
        if (each == '"' || each == '\\') {
            text += '\\';
        }
        text += each;
    }
    text += '"';
    // The message includes the terminating zero and is sent in pieces. The window only identifies pieces of
    // the same message.
    const auto root = xcb_setup_roots_iterator(xcb_get_setup(connection.get())).data->root;
    const auto marker = xcb_generate_id(connection.get());
    xcb_create_window(connection.get(), XCB_COPY_FROM_PARENT, marker, root, -1, -1, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
    xcb_client_message_event_t piece{};
    piece.response_type = XCB_CLIENT_MESSAGE;
    piece.format = 8;
    piece.window = marker;
    piece.type = atom(connection, "_NET_STARTUP_INFO_BEGIN");
    const auto next = atom(connection, "_NET_STARTUP_INFO");
    constexpr std::size_t room = sizeof(piece.data.data8);
    for (std::size_t sent = 0; sent <= text.size(); sent += room) {
        std::fill(std::begin(piece.data.data8), std::end(piece.data.data8), std::uint8_t{0});
        std::copy_n(text.begin() + static_cast<std::ptrdiff_t>(sent), std::min(room, text.size() - sent),
                    std::begin(piece.data.data8));
        xcb_send_event(connection.get(), 0, root, XCB_EVENT_MASK_PROPERTY_CHANGE,
                       reinterpret_cast<const char*>(&piece));
        piece.type = next;
    }
    // The reply to this request shows that the server has processed the messages before the connection
    // closes.
    atom(connection, "_NET_STARTUP_INFO");
}

}  // namespace sordin
