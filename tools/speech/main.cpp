// SPDX-License-Identifier: MIT
// sordin-transcribe: runs the speech decoder over recordings, for developers.
#include "classifier/speech_mask_file.h"
#include "detection/keyword_transcript_scorer.h"
#include "platform/decoding_recogniser.h"
#include "platform/linux/speech/decoder_process.h"
#include "platform/masked_speech_decoder.h"
#include "platform/on_device_transcriber.h"
#include "replay/audio_file.h"
#include "replay/input_error.h"
#include "support/manual_serial_queue.h"
#include "support/own_files.h"
#include "support/program_path.h"
#include "support/sample_conversion.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <fstream>
#include <iostream>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <sys/types.h>
#include <utility>
#include <vector>

namespace {

using namespace sordin;

constexpr auto usage =
    "Usage: sordin-transcribe [--mask FILE|none] [--cleaned FOLDER] RECORDING...\n"
    "Transcribes each recording as one session. Prints a JSON object with all texts, each with the time\n"
    "in seconds at which it appeared; the words of the last text, each with its length in seconds and its\n"
    "acoustic match; the highest keyword score of a text; the duration; and the processor time.\n"
    "--mask selects another speech mask than the installed one, or none.\n"
    "--cleaned writes the decoder's input for each recording to FOLDER/RECORDING.s16: 16-bit mono at 16 "
    "kHz.\n"
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

struct Heard {
    std::vector<HeardWord> words;  // of the last text, before the recognizer filters them
    std::string failure;           // empty, or why the decoder stopped, which a transcriber does not report
};

class KeepingDecoder final : public SpeechDecoder {
public:
    KeepingDecoder(std::unique_ptr<SpeechDecoder> decoder, std::shared_ptr<Heard> heard)
        : decoder_(std::move(decoder)), heard_(std::move(heard)) {}

    [[nodiscard]] unsigned sampleRate() const override { return decoder_->sampleRate(); }
    void begin() override {
        heard_->words.clear();
        noted([this] { decoder_->begin(); });
    }
    void process(std::span<const std::int16_t> samples) override {
        noted([this, samples] { decoder_->process(samples); });
    }
    void end() override { decoder_->end(); }
    [[nodiscard]] std::vector<HeardWord> words() override {
        noted([this] { heard_->words = decoder_->words(); });
        return heard_->words;
    }

private:
    template <class Action>
    void noted(Action action) {
        try {
            action();
        } catch (const SpeechDecoderError& error) {
            heard_->failure = error.what();
            throw;
        }
    }

    const std::unique_ptr<SpeechDecoder> decoder_;
    const std::shared_ptr<Heard> heard_;
};

/// Writes what it hears to a file.
class WritingDecoder final : public SpeechDecoder {
public:
    WritingDecoder(const std::filesystem::path& path, unsigned rate)
        : file_(path, std::ios::binary), rate_(rate) {}

    [[nodiscard]] unsigned sampleRate() const override { return rate_; }
    void begin() override {}
    void process(std::span<const std::int16_t> samples) override {
        file_.write(reinterpret_cast<const char*>(samples.data()),
                    static_cast<std::streamsize>(samples.size_bytes()));
    }
    void end() override {
        if (!file_.flush()) {
            throw std::runtime_error("the cleaned samples cannot be written");
        }
    }
    [[nodiscard]] std::vector<HeardWord> words() override { return {}; }

private:
    std::ofstream file_;
    const unsigned rate_;
};

void writeCleaned(const std::string& recording, const std::filesystem::path& mask,
                  const std::filesystem::path& folder) {
    const auto path = folder / std::filesystem::path(recording).filename().replace_extension(".s16");
    std::unique_ptr<SpeechDecoder> decoder =
        std::make_unique<WritingDecoder>(path, static_cast<unsigned>(replay::replayRate));
    if (!mask.empty()) {
        decoder = std::make_unique<MaskedSpeechDecoder>(std::move(decoder), loadSpeechMask(mask));
    }
    replay::AudioFile file(recording);
    decoder->begin();
    file.readBuffers([&](const std::vector<float>& samples) {
        std::vector<std::int16_t> integers(samples.size());
        std::transform(samples.begin(), samples.end(), integers.begin(), toInteger);
        decoder->process(integers);
    });
    decoder->end();
}

class Transcription {
public:
    Transcription(const std::filesystem::path& program, const SpeechModelFiles& files)
        : recogniser_(std::make_shared<DecodingRecogniser>(
              queue_, DecodingRecogniser::Model{
                          [] { return true; },
                          [this, program, files] {
                              auto decoder = std::make_unique<DecoderProcess>(
                                  findHelper(program, "sordin-speech-decoder").value_or(""), files,
                                  std::make_shared<DecoderInterruption>(), patienceForRecordings);
                              process_ = decoder->pid();
                              return std::make_unique<KeepingDecoder>(std::move(decoder), heard_);
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
        if (!heard_->failure.empty()) {
            throw std::runtime_error(path + ": " + heard_->failure);
        }
        auto words = nlohmann::ordered_json::array();
        for (const HeardWord& word : heard_->words) {
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
    std::shared_ptr<Heard> heard_ = std::make_shared<Heard>();
    std::shared_ptr<SerialQueue> queue_ = std::make_shared<ManualSerialQueue>("sordin.speech");
    std::shared_ptr<DecodingRecogniser> recogniser_;
    OnDeviceTranscriber transcriber_;
};

}  // namespace

int main(int argc, char** argv) {
    std::ios::sync_with_stdio(false);
    std::vector<std::string> arguments(argv + 1, argv + argc);
    SpeechModelFiles files = speechModelFiles(programPath(argv[0]));
    std::optional<std::filesystem::path> cleaned;
    for (; arguments.size() > 1 && (arguments[0] == "--mask" || arguments[0] == "--cleaned");
         arguments.erase(arguments.begin(), arguments.begin() + 2)) {
        if (arguments[0] == "--cleaned") {
            cleaned = arguments[1];
        } else {
            files.mask = arguments[1] == "none" ? "" : arguments[1];
        }
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
            if (cleaned) {
                writeCleaned(path, files.mask, *cleaned);
            }
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
