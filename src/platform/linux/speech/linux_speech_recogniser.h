// SPDX-License-Identifier: MIT
#pragma once

#include "platform/decoding_recogniser.h"
#include "platform/linux/speech/decoder_process.h"
#include "support/serial_queue.h"

#include <filesystem>
#include <memory>

namespace sordin {

/// The recogniser of this platform for the program whose own path is `program`, working on a queue that is
/// its alone. It is there whether or not a model is installed.
[[nodiscard]] std::shared_ptr<DecodingRecogniser> linuxSpeechRecogniser(std::shared_ptr<SerialQueue> queue,
                                                                        const std::filesystem::path& program,
                                                                        DecoderPatience patience = {});

}  // namespace sordin
