// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/speech/speech_model_files.h"
#include "platform/speech_decoder.h"

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace sordin {

/// CMU PocketSphinx with its general English model and a dictionary reduced to the likely words, mixed with
/// the advertising language model. Loading takes 0.2 s of CPU time, decoding 0.1 to 0.25 s for each second of
/// audio. The memory is about 70 MB. With damaged models, the library ends the process or worse: see
/// DecoderProcess.
class PocketSphinxDecoder final : public SpeechDecoder {
public:
    /// Throws SpeechDecoderError if the models cannot be loaded.
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
