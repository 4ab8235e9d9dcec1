// SPDX-License-Identifier: MIT
#include "platform/linux/desktop/frontmost_window.h"

#include "platform/linux/desktop/xcb_handles.h"

#include <cstdlib>
#include <string_view>
#include <xcb/res.h>

namespace sordin {

namespace {

/// A connection to the X server, closed with the object.
class Display {
public:
    Display() : connection_(xcb_connect(nullptr, &screen_)) {}

    [[nodiscard]] std::optional<xcb_window_t> root() const {
        if (xcb_connection_has_error(connection_.get()) != 0) {
            return std::nullopt;
        }
        auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection_.get()));
        for (int i = 0; i < screen_ && screens.rem > 1; ++i) {
            xcb_screen_next(&screens);
        }
        return screens.rem > 0 ? std::optional(screens.data->root) : std::nullopt;
    }

    /// Returns the first 32 bits of a window's property; none if the value is 0, which stands for no object.
    [[nodiscard]] std::optional<std::uint32_t> number(xcb_window_t window, std::string_view property) const {
        const auto name = xcb_intern_atom(connection_.get(), 1, static_cast<std::uint16_t>(property.size()),
                                          property.data());
        const XcbReply<xcb_intern_atom_reply_t> atom(xcb_intern_atom_reply(connection_.get(), name, nullptr));
        if (!atom || atom->atom == XCB_ATOM_NONE) {
            return std::nullopt;
        }
        const auto asked =
            xcb_get_property(connection_.get(), 0, window, atom->atom, XCB_GET_PROPERTY_TYPE_ANY, 0, 1);
        const XcbReply<xcb_get_property_reply_t> reply(
            xcb_get_property_reply(connection_.get(), asked, nullptr));
        if (!reply || reply->format != 32 ||
            xcb_get_property_value_length(reply.get()) != sizeof(std::uint32_t)) {
            return std::nullopt;
        }
        const auto value = *static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
        return value != 0 ? std::optional(value) : std::nullopt;
    }

    /// Returns the process of a window's client according to the X server. _NET_WM_PID of a sandboxed program
    /// holds its process identifier inside the sandbox.
    [[nodiscard]] std::optional<std::uint32_t> clientProcess(xcb_window_t window) const {
        const auto* extension = xcb_get_extension_data(connection_.get(), &xcb_res_id);
        if (extension == nullptr || extension->present == 0) {
            return std::nullopt;
        }
        const xcb_res_client_id_spec_t question{window, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
        const auto asked = xcb_res_query_client_ids(connection_.get(), 1, &question);
        const XcbReply<xcb_res_query_client_ids_reply_t> reply(
            xcb_res_query_client_ids_reply(connection_.get(), asked, nullptr));
        if (!reply) {
            return std::nullopt;
        }
        auto answers = xcb_res_query_client_ids_ids_iterator(reply.get());
        if (answers.rem < 1 || xcb_res_client_id_value_value_length(answers.data) < 1) {
            return std::nullopt;
        }
        return *xcb_res_client_id_value_value(answers.data);
    }

private:
    int screen_ = 0;
    XcbConnection connection_;
};

bool onWayland() {
    const char* display = std::getenv("WAYLAND_DISPLAY");
    const char* session = std::getenv("XDG_SESSION_TYPE");
    return (display != nullptr && *display != '\0') ||
           (session != nullptr && std::string_view(session) == "wayland");
}

}  // namespace

std::optional<std::int32_t> frontmostWindowProcess() {
    if (onWayland()) {
        return std::nullopt;
    }
    const Display display;
    const auto root = display.root();
    const auto window = root ? display.number(*root, "_NET_ACTIVE_WINDOW") : std::nullopt;
    if (!window) {
        return std::nullopt;
    }
    auto process = display.clientProcess(*window);
    if (!process) {
        process = display.number(*window, "_NET_WM_PID");
    }
    return process ? std::optional(static_cast<std::int32_t>(*process)) : std::nullopt;
}

}  // namespace sordin
