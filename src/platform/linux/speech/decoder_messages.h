// SPDX-License-Identifier: MIT
// What the program and its decoder process say to each other over a stream socket: messages of a kind, the
// length of what follows in bytes, and that. The process first says `ready`.
#pragma once

#include "platform/speech_decoder.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sordin {

enum class DecoderMessage : std::uint8_t {
    ready = 'r',    ///< from the process: loaded
    failed = 'f',   ///< from the process, before it ends: why
    begin = 'b',    ///< a new text
    samples = 's',  ///< 16-bit integers in the machine's order
    end = 'e',      ///< the text ends
    ask = 'a',      ///< the words are wanted
    words = 'w',    ///< from the process: the answer
};

struct ReceivedMessage {
    DecoderMessage kind;
    std::string content;
};

/// Writes a message whole; false if the other side is gone or takes nothing for longer than the socket waits.
[[nodiscard]] bool sendMessage(int socket, DecoderMessage kind, std::string_view content = {});

/// Waits for a message; none if the other side is gone, says nothing for longer than the socket waits, or
/// says what cannot be a message.
[[nodiscard]] std::optional<ReceivedMessage> receiveMessage(int socket);

/// Words as what a message contains, and back; none if that was not made of words.
[[nodiscard]] std::string toContent(const std::vector<HeardWord>& words);
[[nodiscard]] std::optional<std::vector<HeardWord>> wordsIn(const std::string& content);

}  // namespace sordin
