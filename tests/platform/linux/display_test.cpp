// SPDX-License-Identifier: MIT
#include "platform/linux/desktop/display.h"
#include "platform/linux/desktop/xcb_handles.h"
#include "system/private_display.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace sordin {
namespace {

TEST(Display, TheEndOfAStartIsToldInPiecesAsTheProtocolHasThem) {
    const PrivateDisplay display;
    const XcbConnection desktop(xcb_connect(nullptr, nullptr));
    const auto root = xcb_setup_roots_iterator(xcb_get_setup(desktop.get())).data->root;
    constexpr std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(desktop.get(), root, XCB_CW_EVENT_MASK, &events);
    xcb_flush(desktop.get());
    for (const auto& [token, told] :
         {std::pair(R"(gnome-shell/Sordin/1-0-host_TIME7)",
                    R"(remove: ID="gnome-shell/Sordin/1-0-host_TIME7")"),
          {R"(a "\ b)", R"(remove: ID="a \"\\ b")"},
          {"1234567",
           R"(remove: ID="1234567")"}}) {  // 20 bytes, so the terminating zero is in a message by itself
        const XcbReply<xcb_get_input_focus_reply_t> ready(
            xcb_get_input_focus_reply(desktop.get(), xcb_get_input_focus(desktop.get()), nullptr));
        endStartupNotification(token);
        std::string all;
        std::vector<xcb_atom_t> types;
        std::set<xcb_window_t> markers;
        while (all.find('\0') == std::string::npos) {
            const XcbReply<xcb_generic_event_t> event(xcb_wait_for_event(desktop.get()));
            ASSERT_TRUE(event);
            if ((event->response_type & 0x7F) != XCB_CLIENT_MESSAGE) {
                continue;
            }
            const auto* piece = reinterpret_cast<const xcb_client_message_event_t*>(event.get());
            types.push_back(piece->type);
            markers.insert(piece->window);
            all.append(std::begin(piece->data.data8), std::end(piece->data.data8));
        }
        EXPECT_STREQ(all.c_str(), told);
        EXPECT_EQ(markers.size(), 1U);
        ASSERT_GE(types.size(), 2U);
        EXPECT_EQ(std::count(types.begin(), types.end(), types[0]), 1) << "only the first message is marked";
    }
}

}  // namespace
}  // namespace sordin
