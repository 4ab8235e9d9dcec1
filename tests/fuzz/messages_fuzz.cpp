// SPDX-License-Identifier: MIT
// Arbitrary bytes from other processes: from the speech decoder, from the program to its volume guard, and
// from the server that names the default output device.
#include "fuzz/require.h"
#include "guard/guard_messages.h"
#include "platform/linux/pipewire/pods.h"
#include "platform/linux/speech/decoder_messages.h"
#include "platform/spoken_text.h"
#include "support/file_descriptor.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <sys/socket.h>

namespace {

using namespace sordin;

void hearWords(const std::string& text) {
    const auto words = wordsIn(text);
    if (!words) {
        return;
    }
    for (const HeardWord& each : *words) {
        require(std::isfinite(each.length) && std::isfinite(each.match) && !each.word.empty());
        require(each.word.find_first_of(" \n\t") == std::string::npos);
    }
    require(words->empty() == (text.find_first_not_of(" \n\t\v\f\r") == std::string::npos));
    const std::string content = toContent(*words);
    const auto again = wordsIn(content);
    require(again && again->size() == words->size() && toContent(*again) == content);
    require(spokenText(*words).empty() == words->empty());
}

void receiveAll(const std::string& text) {
    std::array<int, 2> ends{};
    require(socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()) == 0);
    const FileDescriptor ours(ends[0]);
    FileDescriptor theirs(ends[1]);
    const auto sent = send(theirs.get(), text.data(), text.size(), MSG_DONTWAIT);
    theirs.close();
    std::size_t received = 0;
    while (const auto message = receiveMessage(ours.get())) {
        received += 5 + message->content.size();
    }
    require(received <= static_cast<std::size_t>(std::max<ssize_t>(sent, 0)));
}

void hearProgram(const std::string& text) {
    const DuckInForce before = PendingRestore{0.5F, std::nullopt};
    std::optional<DuckInForce> duck = before;
    if (!readGuardMessage(text, duck)) {
        require(duck == before);
        return;
    }
    std::optional<DuckInForce> again;
    require(readGuardMessage(toGuardMessage(duck), again) && again == duck);
}

}  // namespace

// The first byte selects the sender.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const std::string text(bytes + 1, bytes + size);
    switch (bytes[0] % 4) {
    case 0:
        hearWords(text);
        break;
    case 1:
        receiveAll(text);
        break;
    case 2:
        hearProgram(text);
        break;
    default:
        require(pipewire::nodeName(text).size() <= 3 * text.size());
    }
    return 0;
}
