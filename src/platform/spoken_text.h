// SPDX-License-Identifier: MIT
#pragma once

#include "platform/speech_decoder.h"

#include <string>
#include <vector>

namespace sordin {

/// Joins heard words to a text, with "…" in place of unreliable ones:
/// - words that last longer than people speak them: the decoder also finds words in noise and music;
/// - phrases of advertisements without enough evidence. The decoder expects such phrases, so it also finds
///   them in speech that it does not understand. The acoustic match and the length of the phrase, another
///   phrase in the same text and long words around it count as evidence.
/// "call one eight hundred" becomes "call 1 eight hundred", the beginning of a toll-free number. Nothing else
/// changes: what is spoken as "dot com" or "percent off" must not be there in figures as well, or it would
/// count twice.
[[nodiscard]] std::string spokenText(std::vector<HeardWord> words);

}  // namespace sordin
