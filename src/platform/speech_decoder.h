// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace sordin {

/// The decoder cannot be loaded, or it failed. The message is one line.
class SpeechDecoderError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A word that the decoder recognized.
struct HeardWord {
    std::string word;  ///< lower case, without spaces
    double length;     ///< seconds
    /// Natural logarithm of the likelihood of the word's phones over the likelihood of the best-fitting
    /// phones, averaged over frames of 10 ms. 0 is perfect, -4 usual, -6 poor.
    double match;
};

/// A loaded speech decoder, which turns samples into words as fast as it can. Call it from one thread at a
/// time.
class SpeechDecoder {
public:
    virtual ~SpeechDecoder() = default;

    /// The required sample rate in Hz.
    [[nodiscard]] virtual unsigned sampleRate() const = 0;

    /// Begins a new utterance. Throws SpeechDecoderError.
    virtual void begin() = 0;

    /// Takes mono samples. Throws SpeechDecoderError.
    virtual void process(std::span<const std::int16_t> samples) = 0;

    /// Ends the utterance; words() still returns its words.
    virtual void end() = 0;

    /// Returns the hypothesis for all samples since begin(). Throws SpeechDecoderError.
    [[nodiscard]] virtual std::vector<HeardWord> words() = 0;
};

}  // namespace sordin
