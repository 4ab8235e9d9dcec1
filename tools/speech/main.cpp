// SPDX-License-Identifier: MIT
// sordin-transcribe: runs the speech decoder over recordings, for developers.
#include "detection/keyword_transcript_scorer.h"
#include "platform/decoding_recogniser.h"
#include "platform/linux/speech/decoder_process.h"
#include "platform/on_device_transcriber.h"
#include "replay/audio_file.h"
#include "replay/input_error.h"
#include "support/manual_serial_queue.h"
#include "support/own_files.h"
#include "support/program_path.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <fstream>
#include <iostream>
#include <memory>
#include <span>
#include <string>
#include <sys/types.h>
#include <utility>
#include <vector>

namespace {

using namespace sordin;

constexpr auto usage =
    "Usage: sordin-transcribe [--mask FILE|none] RECORDING...\n"
    "Transcribes each recording as one session. Prints a JSON object with all texts, each with the time\n"
    "in seconds at which it appeared; the words of the last text, each with its length in seconds and its\n"
    "acoustic match; the highest keyword score of a text; the duration; and the processor time.\n"
    "--mask selects another speech mask than the installed one, or none.\n"
    "The last line contains the processor time for loading and the peak memory in MB.\n";

double processorSeconds(pid_t process) {
    clockid_t clock{};
    timespec time{};
    clock_getcpuclockid(process, &clock);
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

double highestMegabytes(pid_t process) {
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("VmHWM:")) {
            return std::strtod(line.c_str() + 6, nullptr) / 1024;
        }
    }
    return 0;
}

/// Keeps the decoder's last words before the recognizer filters them.
class KeepingDecoder final : public SpeechDecoder {
public:
    using Words = std::vector<HeardWord>;

    KeepingDecoder(std::unique_ptr<SpeechDecoder> decoder, std::shared_ptr<Words> kept)
        : decoder_(std::move(decoder)), kept_(std::move(kept)) {}

    [[nodiscard]] unsigned sampleRate() const override { return decoder_->sampleRate(); }
    void begin() override {
        kept_->clear();
        decoder_->begin();
    }
    void process(std::span<const std::int16_t> samples) override { decoder_->process(samples); }
    void end() override { decoder_->end(); }
    [[nodiscard]] Words words() override { return *kept_ = decoder_->words(); }

private:
    const std::unique_ptr<SpeechDecoder> decoder_;
    const std::shared_ptr<Words> kept_;
};

class Transcription {
public:
    Transcription(const std::filesystem::path& program, const SpeechModelFiles& files)
        : recogniser_(std::make_shared<DecodingRecogniser>(
              queue_, DecodingRecogniser::Model{
                          [] { return true; },
                          [this, program, files] {
                              auto decoder = std::make_unique<DecoderProcess>(
                                  findHelper(program, "sordin-speech-decoder").value_or(""), files);
                              process_ = decoder->pid();
                              return std::make_unique<KeepingDecoder>(std::move(decoder), words_);
                          }})),
          transcriber_(recogniser_) {
        transcriber_.begin();
        recogniser_->drain();
        if (!transcriber_.available()) {
            throw std::runtime_error("cannot load the speech model");
        }
    }

    [[nodiscard]] pid_t process() const { return process_; }

    nlohmann::ordered_json transcribe(const std::string& path) {
        replay::AudioFile recording(path);
        transcriber_.begin();
        recogniser_->drain();
        const double begun = processorSeconds(process_);
        std::size_t frames = 0;
        std::string last;
        float score = 0;
        auto texts = nlohmann::ordered_json::array();
        recording.readBuffers([&](std::vector<float> samples) {
            frames += samples.size();
            transcriber_.append(PcmBuffer({replay::replayRate, 1}, std::move(samples)));
            recogniser_->drain();
            std::string text = transcriber_.text();
            if (text != last) {
                score = std::max(score, KeywordTranscriptScorer().score(text));
                texts.push_back({static_cast<double>(frames) / replay::replayRate, text});
                last = std::move(text);
            }
        });
        const double spent = processorSeconds(process_) - begun;
        transcriber_.end();
        recogniser_->drain();
        auto words = nlohmann::ordered_json::array();
        for (const HeardWord& word : *words_) {
            words.push_back({word.word, word.length, word.match});
        }
        return {{"file", path},
                {"texts", std::move(texts)},
                {"words", std::move(words)},
                {"score", score},
                {"duration", static_cast<double>(frames) / replay::replayRate},
                {"cpu", spent}};
    }

private:
    pid_t process_ = -1;
    std::shared_ptr<KeepingDecoder::Words> words_ = std::make_shared<KeepingDecoder::Words>();
    std::shared_ptr<SerialQueue> queue_ = std::make_shared<ManualSerialQueue>("sordin.speech");
    std::shared_ptr<DecodingRecogniser> recogniser_;
    OnDeviceTranscriber transcriber_;
};

}  // namespace

int main(int argc, char** argv) {
    std::ios::sync_with_stdio(false);
    std::vector<std::string> arguments(argv + 1, argv + argc);
    SpeechModelFiles files = speechModelFiles(programPath(argv[0]));
    if (arguments.size() > 1 && arguments[0] == "--mask") {
        files.mask = arguments[1] == "none" ? "" : arguments[1];
        arguments.erase(arguments.begin(), arguments.begin() + 2);
    }
    if (arguments.empty() || arguments[0].starts_with("-")) {
        const bool asked = !arguments.empty() && arguments[0] == "--help";
        (asked ? std::cout : std::cerr) << usage;
        return asked ? 0 : 2;
    }
    try {
        Transcription transcription(programPath(argv[0]), files);
        const double loading = processorSeconds(transcription.process());
        for (const std::string& path : arguments) {
            std::cout << transcription.transcribe(path).dump() << '\n';
        }
        std::cout << nlohmann::ordered_json{{"loading", loading},
                                            {"megabytes", highestMegabytes(transcription.process())}}
                         .dump()
                  << '\n';
    } catch (const std::exception& error) {
        std::cerr << "sordin-transcribe: " << error.what() << '\n';
        return 1;
    }
    return std::cout.flush() ? 0 : 1;
}
