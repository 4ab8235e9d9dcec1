// SPDX-License-Identifier: MIT
#pragma once

#include "platform/speech_decoder.h"
#include "platform/speech_recogniser.h"
#include "support/serial_queue.h"

#include <functional>
#include <memory>

namespace sordin {

/// Runs a decoder on a queue of its own. The decoder is loaded there when the first session begins. Each half
/// second of audio gives a text if it has changed. Where the decoder falls more than two seconds behind,
/// audio is dropped until it has caught up. A decoder that fails is loaded again for the next session; one
/// that cannot be loaded is not tried again, and the recogniser is no longer available.
///
/// All operations may be called on any thread but the queue's own.
class DecodingRecogniser final : public SpeechRecogniser {
public:
    /// Where decoders come from.
    struct Model {
        std::function<bool()> installed;  ///< whether all its files are there; any thread
        std::function<std::unique_ptr<SpeechDecoder>()> load;  ///< throws SpeechDecoderError; on the queue
        /// Makes every load and every decoder fail at once, also those that are being waited for; any
        /// thread. Empty where nothing hangs.
        std::function<void()> interrupt{};
    };

    DecodingRecogniser(std::shared_ptr<SerialQueue> queue, Model model);
    ~DecodingRecogniser() override;  ///< interrupts; sessions that are still held give no more text
    DecodingRecogniser(const DecodingRecogniser&) = delete;
    DecodingRecogniser& operator=(const DecodingRecogniser&) = delete;

    /// True exactly when the model is installed: there is nobody to be asked.
    [[nodiscard]] bool authorised() const override;
    [[nodiscard]] bool canRequestAuthorisation() const override;
    void requestAuthorisation(std::function<void()> done) override;
    [[nodiscard]] bool available() const override;
    [[nodiscard]] bool supportsOnDevice() const override { return true; }
    [[nodiscard]] std::shared_ptr<SpeechSession> start(TextHandler onText, ErrorHandler onError) override;
    void drain() override;
    void rest() override;

private:
    class Worker;
    class Session;

    const std::shared_ptr<SerialQueue> queue_;
    const std::function<bool()> installed_;
    const std::function<void()> interrupt_;
    const std::shared_ptr<Worker> worker_;
};

}  // namespace sordin
