// SPDX-License-Identifier: MIT
// The protocol between the program and its decoder process over a stream socket. A message consists of its
// kind, the length of its content in bytes, and the content. The process sends `ready` first.
#pragma once

#include "platform/speech_decoder.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sordin {

enum class DecoderMessage : std::uint8_t {
    ready = 'r',    ///< from the process: the model is loaded
    failed = 'f',   ///< from the process, before it ends: the error message
    begin = 'b',    ///< begins an utterance
    samples = 's',  ///< 16-bit integers in native byte order
    end = 'e',      ///< ends the utterance
    ask = 'a',      ///< requests the words
    words = 'w',    ///< from the process: the reply to `ask`
};

struct ReceivedMessage {
    DecoderMessage kind;
    std::string content;
};

/// Sends a whole message. Returns false if the peer is gone or does not receive within the socket's timeout.
[[nodiscard]] bool sendMessage(int socket, DecoderMessage kind, std::string_view content = {});

/// Waits for a message. Returns none if the peer is gone, sends nothing within the socket's timeout, or sends
/// an invalid message.
[[nodiscard]] std::optional<ReceivedMessage> receiveMessage(int socket);

/// Encode words as message content and decode them; wordsIn() returns none if the content is invalid.
[[nodiscard]] std::string toContent(const std::vector<HeardWord>& words);
[[nodiscard]] std::optional<std::vector<HeardWord>> wordsIn(const std::string& content);

}  // namespace sordin
