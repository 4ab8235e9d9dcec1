// SPDX-License-Identifier: MIT
// sordin-speech-decoder: the process of the speech decoder. Only the program starts it and communicates with
// it through standard input, which is a socket.
#include "classifier/speech_mask_file.h"
#include "platform/linux/speech/decoder_messages.h"
#include "platform/linux/speech/pocketsphinx_decoder.h"
#include "platform/masked_speech_decoder.h"

#include <cstdint>
#include <cstring>
#include <exception>
#include <filesystem>
#include <iostream>
#include <memory>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

using namespace sordin;

constexpr int socketToProgram = STDIN_FILENO;
constexpr int niceness = 5;  // playback has precedence

void serve(SpeechDecoder& decoder) {
    std::vector<std::int16_t> samples;
    while (const auto message = receiveMessage(socketToProgram)) {
        switch (message->kind) {
        case DecoderMessage::begin:
            decoder.begin();
            break;
        case DecoderMessage::samples:
            samples.resize(message->content.size() / sizeof(std::int16_t));
            std::memcpy(samples.data(), message->content.data(), samples.size() * sizeof(std::int16_t));
            decoder.process(samples);
            break;
        case DecoderMessage::end:
            decoder.end();
            break;
        case DecoderMessage::ask:
            if (!sendMessage(socketToProgram, DecoderMessage::words, toContent(decoder.words()))) {
                return;
            }
            break;
        default:
            return;
        }
    }
}

/// Returns the decoder without a mask if the mask cannot be used.
std::unique_ptr<SpeechDecoder> masked(std::unique_ptr<SpeechDecoder> decoder,
                                      const std::filesystem::path& mask) {
    if (mask.empty()) {
        return decoder;
    }
    try {
        SpeechMaskModel model = loadSpeechMask(mask);
        if (model.rate == decoder->sampleRate()) {
            return std::make_unique<MaskedSpeechDecoder>(std::move(decoder), std::move(model));
        }
        std::cerr << mask.string() << ": the sample rate does not match the decoder\n";
    } catch (const SpeechMaskError& error) {
        std::cerr << error.what() << '\n';
    }
    return decoder;
}

bool calledByProgram() {
    struct stat input {};
    return fstat(socketToProgram, &input) == 0 && S_ISSOCK(input.st_mode);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 6 || !calledByProgram()) {
        std::cerr << "sordin-speech-decoder is an internal part of Sordin, which starts it\n";
        return 2;
    }
    try {
        [[maybe_unused]] const int priority = nice(niceness);
        const SpeechModelFiles files{argv[1], argv[2], argv[3], argv[4], argv[5]};
        const auto decoder = masked(std::make_unique<PocketSphinxDecoder>(files), files.mask);
        if (sendMessage(socketToProgram, DecoderMessage::ready)) {
            serve(*decoder);
        }
    } catch (const std::exception& error) {
        return sendMessage(socketToProgram, DecoderMessage::failed, error.what()) ? 1 : 2;
    }
    return 0;
}
