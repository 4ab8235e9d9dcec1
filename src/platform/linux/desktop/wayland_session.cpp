// SPDX-License-Identifier: MIT
#include "platform/linux/desktop/wayland_session.h"

#include "platform/linux/desktop/xcb_handles.h"
#include "support/deleter.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <wayland-client.h>
#include <xcb/randr.h>

namespace sordin {

namespace {

using WaylandDisplay = std::unique_ptr<wl_display, Deleter<wl_display_disconnect>>;
using WaylandRegistry = std::unique_ptr<wl_registry, Deleter<wl_registry_destroy>>;
using WaylandOutput = std::unique_ptr<wl_output, Deleter<wl_output_destroy>>;

struct Output {
    WaylandOutput handle;
    MonitorSize size;
    bool turned = false;
};

struct Found {
    WaylandSession session;
    std::vector<std::unique_ptr<Output>> outputs;
};

void noteGeometry(void* data, wl_output* /*output*/, std::int32_t /*x*/, std::int32_t /*y*/,
                  std::int32_t /*width*/, std::int32_t /*height*/, std::int32_t /*subpixel*/,
                  const char* /*make*/, const char* /*model*/, std::int32_t transform) {
    // Odd transforms rotate by 90 or 270 degrees.
    static_cast<Output*>(data)->turned = transform % 2 != 0;
}

void noteMode(void* data, wl_output* /*output*/, std::uint32_t flags, std::int32_t width, std::int32_t height,
              std::int32_t /*refresh*/) {
    if ((flags & WL_OUTPUT_MODE_CURRENT) != 0) {
        static_cast<Output*>(data)->size = {width, height};
    }
}

void noteGlobal(void* data, wl_registry* registry, std::uint32_t name, const char* interface,
                std::uint32_t /*version*/) {
    auto& found = *static_cast<Found*>(data);
    if (std::strcmp(interface, "zxdg_decoration_manager_v1") == 0) {
        found.session.drawsTitleBars = true;
    } else if (std::strcmp(interface, "org_kde_plasma_shell") == 0) {
        found.session.isPlasma = true;
    } else if (std::strcmp(interface, wl_output_interface.name) == 0) {
        static constexpr wl_output_listener listener = [] {
            wl_output_listener of{};  // version 1 has only these two events
            of.geometry = noteGeometry;
            of.mode = noteMode;
            return of;
        }();
        auto output = std::make_unique<Output>();
        output->handle.reset(
            static_cast<wl_output*>(wl_registry_bind(registry, name, &wl_output_interface, 1)));
        wl_output_add_listener(output->handle.get(), &listener, output.get());
        found.outputs.push_back(std::move(output));
    }
}

void noteRemoval(void* /*data*/, wl_registry* /*registry*/, std::uint32_t /*name*/) {}

}  // namespace

std::optional<WaylandSession> waylandSession() {
    const char* name = std::getenv("WAYLAND_DISPLAY");  // without it, the library falls back to "wayland-0"
    if (name == nullptr || *name == '\0' || std::getenv("WAYLAND_SOCKET") != nullptr) {
        return std::nullopt;  // a socket passed by descriptor works only once, and the toolkit needs it
    }
    const WaylandDisplay display(wl_display_connect(nullptr));
    if (!display) {
        return std::nullopt;
    }
    Found found;
    const WaylandRegistry registry(wl_display_get_registry(display.get()));
    static constexpr wl_registry_listener listener{noteGlobal, noteRemoval};
    wl_registry_add_listener(registry.get(), &listener, &found);
    // The first round trip delivers the globals, the second the events of the outputs bound then.
    if (wl_display_roundtrip(display.get()) < 0 || wl_display_roundtrip(display.get()) < 0) {
        return std::nullopt;
    }
    for (const auto& output : found.outputs) {
        const auto [width, height] = output->size;
        found.session.monitors.push_back(output->turned ? MonitorSize(height, width) : output->size);
    }
    std::sort(found.session.monitors.begin(), found.session.monitors.end());
    return std::move(found.session);
}

std::vector<MonitorSize> x11Monitors() {
    const XcbConnection connection(xcb_connect(nullptr, nullptr));
    if (xcb_connection_has_error(connection.get()) != 0) {
        return {};
    }
    const auto root = xcb_setup_roots_iterator(xcb_get_setup(connection.get())).data->root;
    const XcbReply<xcb_randr_get_monitors_reply_t> reply(xcb_randr_get_monitors_reply(
        connection.get(), xcb_randr_get_monitors(connection.get(), root, 1), nullptr));
    std::vector<MonitorSize> all;
    if (reply) {
        for (auto each = xcb_randr_get_monitors_monitors_iterator(reply.get()); each.rem > 0;
             xcb_randr_monitor_info_next(&each)) {
            all.emplace_back(each.data->width, each.data->height);
        }
    }
    std::sort(all.begin(), all.end());
    return all;
}

bool prefersXwayland(const WaylandSession& session, const std::vector<MonitorSize>& x11) {
    return (session.isPlasma || !session.drawsTitleBars) && !x11.empty() && x11 == session.monitors;
}

}  // namespace sordin
