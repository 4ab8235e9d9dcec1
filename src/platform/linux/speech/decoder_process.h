// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/speech/speech_model_files.h"
#include "platform/speech_decoder.h"
#include "support/file_descriptor.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <span>
#include <sys/types.h>
#include <vector>

namespace sordin {

/// Aborts waiting for a decoder process. Any thread.
class DecoderInterruption {
public:
    /// Aborts the current wait and all later ones.
    void interrupt();

    /// Registers the socket to shut down on interrupt(). Returns false if interrupted already. One socket at
    /// a time.
    [[nodiscard]] bool watch(int socket);
    /// Removes the socket. Call it before closing the socket.
    void leave();

private:
    std::mutex lock_;
    // Guarded by lock_:
    bool interrupted_ = false;
    int socket_ = -1;
};

/// The time after which a silent decoder process counts as broken. A healthy process loads in a quarter of a
/// second, or in a few seconds from a slow disk, and replies in less than half a second.
struct DecoderPatience {
    std::chrono::seconds loading{20};
    std::chrono::seconds answers{5};
};

/// For the replay of recordings, whose result must not depend on the load of the machine.
constexpr DecoderPatience patienceForRecordings{std::chrono::minutes(10), std::chrono::minutes(10)};

/// A PocketSphinxDecoder in a separate process. With damaged models, the library ends its process; and a
/// process returns all its memory when it ends. The process ends with this object and with the program,
/// however the program ends.
class DecoderProcess final : public SpeechDecoder {
public:
    /// Starts `helper` and waits until the model is loaded. Throws SpeechDecoderError.
    DecoderProcess(
        const std::filesystem::path& helper, const SpeechModelFiles& files,
        std::shared_ptr<DecoderInterruption> interruption = std::make_shared<DecoderInterruption>(),
        DecoderPatience patience = {});
    ~DecoderProcess() override;
    DecoderProcess(const DecoderProcess&) = delete;
    DecoderProcess& operator=(const DecoderProcess&) = delete;

    [[nodiscard]] unsigned sampleRate() const override { return 16000; }
    void begin() override;
    void process(std::span<const std::int16_t> samples) override;
    void end() override;
    [[nodiscard]] std::vector<HeardWord> words() override;

    /// The process identifier, for tests that kill the process.
    [[nodiscard]] pid_t pid() const { return pid_; }

private:
    void close();

    const std::shared_ptr<DecoderInterruption> interruption_;
    FileDescriptor socket_;
    pid_t pid_ = -1;
};

}  // namespace sordin
