// SPDX-License-Identifier: MIT
#include "platform/linux/speech/linux_speech_recogniser.h"

#include "platform/linux/speech/speech_model_files.h"
#include "support/own_files.h"

#include <utility>

namespace sordin {

namespace {

constexpr auto helperName = "sordin-speech-decoder";

}  // namespace

std::shared_ptr<DecodingRecogniser> linuxSpeechRecogniser(std::shared_ptr<SerialQueue> queue,
                                                          const std::filesystem::path& program,
                                                          DecoderPatience patience) {
    // The files are looked up each time, because they can be installed while the program runs.
    DecodingRecogniser::Model model;
    model.installed = [program] {
        return findHelper(program, helperName).has_value() && speechModelFiles(program).installed();
    };
    const auto interruption = std::make_shared<DecoderInterruption>();
    model.load = [program, interruption, patience] {
        return std::make_unique<DecoderProcess>(findHelper(program, helperName).value_or(helperName),
                                                speechModelFiles(program), interruption, patience);
    };
    model.interrupt = [interruption] { interruption->interrupt(); };
    return std::make_shared<DecodingRecogniser>(std::move(queue), std::move(model));
}

}  // namespace sordin
