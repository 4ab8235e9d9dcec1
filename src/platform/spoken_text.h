// SPDX-License-Identifier: MIT
#pragma once

#include "platform/speech_decoder.h"

#include <string>
#include <vector>

namespace sordin {

/// Heard words as a text, with "…" where they are not to be believed:
/// - words that last longer than anybody speaks them: noise and music, which a decoder takes for speech too;
/// - phrases of advertisements without enough evidence. The decoder expects such phrases, so it also hears
///   them in speech that it does not understand. Evidence are a phrase that fits its sounds, a long one,
///   another phrase in the same text, and long words around it.
/// "call one eight hundred" becomes "call 1 eight hundred", the beginning of a toll-free number. Nothing else
/// changes: what is spoken as "dot com" or "percent off" must not be there in figures as well, or it would
/// count twice.
[[nodiscard]] std::string spokenText(std::vector<HeardWord> words);

}  // namespace sordin
