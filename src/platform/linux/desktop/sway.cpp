// SPDX-License-Identifier: MIT
#include "platform/linux/desktop/sway.h"

#include "support/file_descriptor.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

namespace sordin {

namespace {

using nlohmann::json;

/// A connection to Sway's IPC socket (sway-ipc(7)).
class Sway {
public:
    enum class Request : std::uint32_t { command = 0, workspaces = 1, tree = 4 };

    explicit Sway(const std::string& path) : socket_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        if (path.size() >= sizeof(address.sun_path)) {
            return;
        }
        path.copy(address.sun_path, path.size());
        constexpr timeval patience{1, 0};
        for (const int direction : {SO_RCVTIMEO, SO_SNDTIMEO}) {
            static_cast<void>(
                ::setsockopt(socket_.get(), SOL_SOCKET, direction, &patience, sizeof(patience)));
        }
        connected_ =
            ::connect(socket_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
    }

    /// Returns null if Sway does not answer.
    [[nodiscard]] json ask(Request request, const std::string& what = {}) const {
        constexpr std::uint32_t longestAnswer = 1 << 24;
        const Header question{magic, static_cast<std::uint32_t>(what.size()),
                              static_cast<std::uint32_t>(request)};
        std::string message(sizeof(question), '\0');
        std::memcpy(message.data(), &question, sizeof(question));
        message += what;
        if (!connected_ || ::send(socket_.get(), message.data(), message.size(), MSG_NOSIGNAL) !=
                               static_cast<ssize_t>(message.size())) {
            return nullptr;
        }
        Header answer{};
        if (!read(&answer, sizeof(answer)) || answer.magic != magic || answer.size > longestAnswer) {
            return nullptr;
        }
        std::string text(answer.size, '\0');
        return read(text.data(), text.size()) ? json::parse(text, nullptr, false) : json(nullptr);
    }

private:
    static constexpr std::array<char, 6> magic{'i', '3', '-', 'i', 'p', 'c'};
    struct [[gnu::packed]] Header {
        std::array<char, 6> magic;
        std::uint32_t size;
        std::uint32_t type;
    };

    [[nodiscard]] bool read(void* memory, std::size_t size) const {
        return ::recv(socket_.get(), memory, size, MSG_WAITALL) == static_cast<ssize_t>(size);
    }

    const FileDescriptor socket_;
    bool connected_ = false;
};

struct Rectangle {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
};

std::optional<Rectangle> rectangleOf(const json& node) {
    const auto rectangle = node.find("rect");
    if (rectangle == node.end() || !rectangle->is_object()) {
        return std::nullopt;
    }
    const auto number = [&](const char* name) {
        const auto found = rectangle->find(name);
        return found != rectangle->end() && found->is_number_integer() ? found->get<int>() : 0;
    };
    return Rectangle{number("x"), number("y"), number("width"), number("height")};
}

/// Returns the node with the focus; null if there is none.
const json* focused(const json& node) {
    if (!node.is_object()) {
        return nullptr;
    }
    if (node.value("focused", json()) == true) {
        return &node;
    }
    for (const char* branch : {"nodes", "floating_nodes"}) {
        const auto children = node.find(branch);
        if (children == node.end() || !children->is_array()) {
            continue;
        }
        for (const json& child : *children) {
            if (const json* found = focused(child)) {
                return found;
            }
        }
    }
    return nullptr;
}

}  // namespace

void moveFocusedWindowToPointerInSway() {
    const char* path = std::getenv("SWAYSOCK");
    if (path == nullptr) {
        return;
    }
    const Sway sway(path);
    const std::string ours = "[con_id=__focused__ pid=" + std::to_string(::getpid()) + " floating] move ";
    static_cast<void>(sway.ask(Sway::Request::command, ours + "position cursor"));
    const json tree = sway.ask(Sway::Request::tree);
    const json* window = focused(tree);
    const auto place = window != nullptr ? rectangleOf(*window) : std::nullopt;
    const json workspaces = sway.ask(Sway::Request::workspaces);
    for (const json& workspace : workspaces.is_array() ? workspaces : json::array()) {
        const auto free = rectangleOf(workspace);
        if (!place || !free || workspace.value("focused", json()) != true) {
            continue;
        }
        constexpr int gap = 6;
        const auto within = [](int wanted, int size, int first, int length) {
            return std::max(first + gap, std::min(wanted, first + length - gap - size));
        };
        const int x = within(place->x, place->width, free->x, free->width);
        const int y = within(place->y, place->height, free->y, free->height);
        static_cast<void>(sway.ask(Sway::Request::command, ours + "absolute position " + std::to_string(x) +
                                                               " " + std::to_string(y)));
    }
}

}  // namespace sordin
