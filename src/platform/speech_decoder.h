// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>

namespace sordin {

/// The decoder cannot be loaded, or has failed. The text is one line.
class SpeechDecoderError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
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

    /// Ends the text; it can still be asked for.
    virtual void end() = 0;

    /// What it makes of all samples since begin(): lower case, words with single spaces between them.
    /// Throws SpeechDecoderError.
    [[nodiscard]] virtual std::string text() = 0;
};

}  // namespace sordin
