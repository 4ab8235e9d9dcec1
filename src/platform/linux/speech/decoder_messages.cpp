// SPDX-License-Identifier: MIT
#include "platform/linux/speech/decoder_messages.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <locale>
#include <sstream>
#include <sys/socket.h>

namespace sordin {

namespace {

constexpr std::uint32_t longestMessage = 1U << 24;  // minutes of audio; longer messages are invalid
constexpr std::size_t headerLength = 1 + sizeof(std::uint32_t);

/// Returns whether all of the content arrived.
bool receiveWhole(int socket, char* data, std::size_t length) {
    while (length > 0) {
        const ssize_t got = recv(socket, data, length, 0);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got <= 0) {
            return false;
        }
        data += got;
        length -= static_cast<std::size_t>(got);
    }
    return true;
}

}  // namespace

bool sendMessage(int socket, DecoderMessage kind, std::string_view content) {
    const auto length = static_cast<std::uint32_t>(content.size());
    std::string message(headerLength, static_cast<char>(kind));
    std::memcpy(message.data() + 1, &length, sizeof length);
    message += content;
    for (std::string_view rest = message; !rest.empty();) {
        const ssize_t sent = send(socket, rest.data(), rest.size(), MSG_NOSIGNAL);
        if (sent < 0 && errno != EINTR) {
            return false;
        }
        rest.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(sent, 0)));
    }
    return true;
}

std::optional<ReceivedMessage> receiveMessage(int socket) {
    std::array<char, headerLength> header{};
    std::uint32_t length = 0;
    if (!receiveWhole(socket, header.data(), header.size())) {
        return std::nullopt;
    }
    std::memcpy(&length, header.data() + 1, sizeof length);
    if (length > longestMessage) {
        return std::nullopt;
    }
    ReceivedMessage message{static_cast<DecoderMessage>(header[0]), std::string(length, '\0')};
    if (!receiveWhole(socket, message.content.data(), length)) {
        return std::nullopt;
    }
    return message;
}

std::string toContent(const std::vector<HeardWord>& words) {
    std::ostringstream content;
    content.imbue(std::locale::classic());
    for (const HeardWord& each : words) {
        content << each.length << ' ' << each.match << ' ' << each.word << '\n';
    }
    return content.str();
}

std::optional<std::vector<HeardWord>> wordsIn(const std::string& content) {
    std::istringstream lines(content);
    lines.imbue(std::locale::classic());
    std::vector<HeardWord> words;
    while (!(lines >> std::ws).eof()) {
        HeardWord each{};
        if (!(lines >> each.length >> each.match >> each.word) || !std::isfinite(each.length) ||
            !std::isfinite(each.match)) {
            return std::nullopt;
        }
        words.push_back(each);
    }
    return words;
}

}  // namespace sordin
