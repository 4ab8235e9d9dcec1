// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/speech/speech_model_files.h"
#include "platform/speech_decoder.h"
#include "support/file_descriptor.h"

#include <cstdint>
#include <filesystem>
#include <span>
#include <sys/types.h>
#include <vector>

namespace sordin {

/// A PocketSphinxDecoder in a process of its own: damaged models make the library end the process that it is
/// in, and all its memory is back when that process goes. The process ends with this object, and with the
/// program however that ends.
class DecoderProcess final : public SpeechDecoder {
public:
    /// Starts `helper` and waits until it has loaded the model. Throws SpeechDecoderError.
    DecoderProcess(const std::filesystem::path& helper, const SpeechModelFiles& files);
    ~DecoderProcess() override;
    DecoderProcess(const DecoderProcess&) = delete;
    DecoderProcess& operator=(const DecoderProcess&) = delete;

    [[nodiscard]] unsigned sampleRate() const override { return 16000; }
    void begin() override;
    void process(std::span<const std::int16_t> samples) override;
    void end() override;
    [[nodiscard]] std::vector<HeardWord> words() override;

    /// The process, for tests that end it.
    [[nodiscard]] pid_t pid() const { return pid_; }

private:
    void close();

    FileDescriptor socket_;
    pid_t pid_ = -1;
};

}  // namespace sordin
