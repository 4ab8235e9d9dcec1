// SPDX-License-Identifier: MIT
#pragma once

#include "platform/decoding_recogniser.h"
#include "platform/linux/speech/decoder_process.h"
#include "support/serial_queue.h"

#include <filesystem>
#include <memory>

namespace sordin {

/// Creates the speech recognizer of this platform. `queue` is its exclusive queue; `program` is the path of
/// the running program. A model does not have to be installed.
[[nodiscard]] std::shared_ptr<DecodingRecogniser> linuxSpeechRecogniser(std::shared_ptr<SerialQueue> queue,
                                                                        const std::filesystem::path& program,
                                                                        DecoderPatience patience = {});

}  // namespace sordin
