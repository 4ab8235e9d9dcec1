// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace sordin {

/// The decoder cannot be loaded, or has failed. The text is one line.
class SpeechDecoderError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A word as a decoder believes to have heard it.
struct HeardWord {
    std::string word;  ///< lower case, without spaces
    double length;     ///< seconds
    /// How well it fits: natural logarithm of the likelihood of its sounds over that of whatever fitted best,
    /// mean of the hundredths of a second. 0 is as well as can be, -4 usual, -6 poor.
    double match;
};

/// A loaded speech decoder, which turns samples into words as fast as it can. For one thread at a time.
class SpeechDecoder {
public:
    virtual ~SpeechDecoder() = default;

    /// Hz of the samples that it takes.
    [[nodiscard]] virtual unsigned sampleRate() const = 0;

    /// Begins a new text. Throws SpeechDecoderError.
    virtual void begin() = 0;

    /// Takes mono samples. Throws SpeechDecoderError.
    virtual void process(std::span<const std::int16_t> samples) = 0;

    /// Ends the text; its words can still be asked for.
    virtual void end() = 0;

    /// What it makes of all samples since begin(). Throws SpeechDecoderError.
    [[nodiscard]] virtual std::vector<HeardWord> words() = 0;
};

}  // namespace sordin
