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

/// Ends what decoder processes wait for. Any thread.
class DecoderInterruption {
public:
    /// From now on no decoder process begins or answers.
    void interrupt();

    /// Has a socket shut down when it is interrupted; false if it has been. One at a time.
    [[nodiscard]] bool watch(int socket);
    /// The socket is about to be closed.
    void leave();

private:
    std::mutex lock_;
    // Guarded by lock_:
    bool interrupted_ = false;
    int socket_ = -1;
};

/// How long a decoder process may take before it counts as broken. A healthy one loads in a quarter of a
/// second, from a slow disk in a few seconds, and answers in less than half of one.
struct DecoderPatience {
    std::chrono::seconds loading{20};
    std::chrono::seconds answers{5};
};

/// For recordings: what is heard must not depend on how busy the machine is.
constexpr DecoderPatience patienceForRecordings{std::chrono::minutes(10), std::chrono::minutes(10)};

/// A PocketSphinxDecoder in a process of its own: damaged models make the library end the process that it is
/// in, and all its memory is back when that process goes. The process ends with this object, and with the
/// program however that ends.
class DecoderProcess final : public SpeechDecoder {
public:
    /// Starts `helper` and waits until it has loaded the model. Throws SpeechDecoderError.
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

    /// The process, for tests that end it.
    [[nodiscard]] pid_t pid() const { return pid_; }

private:
    void close();

    const std::shared_ptr<DecoderInterruption> interruption_;
    FileDescriptor socket_;
    pid_t pid_ = -1;
};

}  // namespace sordin
