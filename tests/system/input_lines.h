// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <pipewire/pipewire.h>
#include <string>
#include <unistd.h>
#include <utility>

namespace sordin {

/// Reads stdin line by line in a PipeWire loop, for the test programs. The loop ends with stdin.
class InputLines {
public:
    InputLines(pw_main_loop* loop, std::function<void(const std::string&)> handler)
        : loop_(loop), handler_(std::move(handler)) {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpedantic"  // for the macro
        pw_loop_add_io(pw_main_loop_get_loop(loop), STDIN_FILENO, SPA_IO_IN | SPA_IO_HUP, false, read, this);
#pragma GCC diagnostic pop
    }
    ~InputLines() = default;
    InputLines(const InputLines&) = delete;
    InputLines& operator=(const InputLines&) = delete;

private:
    static void read(void* data, int descriptor, std::uint32_t /*mask*/) {
        auto& self = *static_cast<InputLines*>(data);
        std::array<char, 256> bytes{};
        const auto got = ::read(descriptor, bytes.data(), bytes.size());
        if (got <= 0) {
            pw_main_loop_quit(self.loop_);
            return;
        }
        std::string& begun = self.begun_;
        begun.append(bytes.data(), static_cast<std::size_t>(got));
        for (std::size_t end = 0; (end = begun.find('\n')) != std::string::npos; begun.erase(0, end + 1)) {
            self.handler_(begun.substr(0, end));
        }
    }

    pw_main_loop* loop_;
    std::function<void(const std::string&)> handler_;
    std::string begun_;
};

}  // namespace sordin
