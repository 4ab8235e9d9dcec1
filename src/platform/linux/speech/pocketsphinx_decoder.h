// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/speech/speech_model_files.h"
#include "platform/speech_decoder.h"

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace sordin {

/// CMU PocketSphinx with its general English model and dictionary cut to the likely words, and with our model
/// of how advertisements talk mixed in. Loading takes 0.2 CPU s, decoding 0.1 to 0.25 CPU s for each second
/// of audio, and both some 70 MB.
/// Damaged models make the library end the process or worse: see DecoderProcess.
class PocketSphinxDecoder final : public SpeechDecoder {
public:
    /// Throws SpeechDecoderError.
    explicit PocketSphinxDecoder(const SpeechModelFiles& files);
    ~PocketSphinxDecoder() override;
    PocketSphinxDecoder(const PocketSphinxDecoder&) = delete;
    PocketSphinxDecoder& operator=(const PocketSphinxDecoder&) = delete;

    [[nodiscard]] unsigned sampleRate() const override { return 16000; }
    void begin() override;
    void process(std::span<const std::int16_t> samples) override;
    void end() override;
    [[nodiscard]] std::vector<HeardWord> words() override;

private:
    class Engine;
    std::unique_ptr<Engine> engine_;
};

}  // namespace sordin
