// SPDX-License-Identifier: MIT
#include "platform/linux/pipewire/pulse_probe.h"

#include <cstdlib>
#include <memory>
#include <pulse/context.h>
#include <pulse/introspect.h>
#include <pulse/mainloop.h>
#include <pulse/operation.h>
#include <string>
#include <string_view>

namespace sordin::pipewire {

namespace {

using Clock = std::chrono::steady_clock;

template <auto free>
struct Freed {
    template <class Thing>
    void operator()(Thing* thing) const {
        free(thing);
    }
};

std::string environment(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

/// Runs the loop until `done` or the deadline.
template <class Condition>
bool iterateUntil(pa_mainloop* loop, Clock::time_point end, Condition done) {
    while (!done()) {
        const auto left = std::chrono::duration_cast<std::chrono::microseconds>(end - Clock::now());
        if (left.count() <= 0 || pa_mainloop_prepare(loop, static_cast<int>(left.count())) < 0 ||
            pa_mainloop_poll(loop) < 0 || pa_mainloop_dispatch(loop) < 0) {
            return false;
        }
    }
    return true;
}

}  // namespace

std::filesystem::path pulseSocket() {
    const std::string folder = environment("PULSE_RUNTIME_PATH");
    if (!folder.empty()) {
        return std::filesystem::path(folder) / "native";
    }
    return std::filesystem::path(environment("XDG_RUNTIME_DIR")) / "pulse" / "native";
}

std::optional<bool> isOtherPulseServer(const std::filesystem::path& socket,
                                       std::chrono::milliseconds deadline) {
    const auto end = Clock::now() + deadline;
    std::error_code error;
    if (!std::filesystem::is_socket(socket, error)) {
        return std::nullopt;
    }
    const std::unique_ptr<pa_mainloop, Freed<pa_mainloop_free>> loop(pa_mainloop_new());
    const std::unique_ptr<pa_context, Freed<pa_context_unref>> context(
        pa_context_new(pa_mainloop_get_api(loop.get()), "Sordin"));
    const std::string address = "unix:" + socket.string();
    if (pa_context_connect(context.get(), address.c_str(), PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0) {
        return std::nullopt;
    }
    std::optional<bool> other;
    const auto state = [&] { return pa_context_get_state(context.get()); };
    const auto ended = [&] { return !PA_CONTEXT_IS_GOOD(state()); };
    if (iterateUntil(loop.get(), end, [&] { return state() == PA_CONTEXT_READY || ended(); }) && !ended()) {
        const std::unique_ptr<pa_operation, Freed<pa_operation_unref>> question(pa_context_get_server_info(
            context.get(),
            [](pa_context* /*context*/, const pa_server_info* info, void* data) {
                const std::string_view name =
                    info != nullptr && info->server_name != nullptr ? info->server_name : std::string_view();
                // PipeWire's own answer is "PulseAudio (on PipeWire 0.3.65)".
                *static_cast<std::optional<bool>*>(data) = name.find("PipeWire") == std::string_view::npos;
            },
            &other));
        iterateUntil(loop.get(), end, [&] { return other.has_value() || ended(); });
        if (question) {
            pa_operation_cancel(question.get());
        }
    }
    pa_context_disconnect(context.get());
    return other;
}

}  // namespace sordin::pipewire
