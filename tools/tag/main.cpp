// SPDX-License-Identifier: MIT
// sordin-tag: prints the sound model's confidence in each label for recordings, for developers.
#include "classifier/network_sound_tagger.h"
#include "classifier/sound_model_file.h"
#include "replay/audio_file.h"
#include "replay/input_error.h"
#include "support/own_files.h"
#include "support/program_path.h"

#include <nlohmann/json.hpp>

#include <exception>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace sordin;

constexpr auto usage =
    "Usage: sordin-tag [--model FILE] RECORDING...\n"
    "Prints a JSON object for every half second of each recording, from 1 s on, with the time in seconds\n"
    "and the model's confidence in each label. The recording is converted to 16 kHz mono; silence is\n"
    "kept. Without --model, the installed model is used.\n";

/// The command line is invalid.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

void tag(const SoundModel& model, const std::string& path) {
    replay::AudioFile recording(path);
    NetworkSoundTagger tagger(model);
    std::size_t frames = 0;  // up to the end of the current buffer
    tagger.onLabels([&frames](std::span<const SoundLabel> labels) {
        nlohmann::ordered_json line{{"t", static_cast<double>(frames) / replay::replayRate}};
        for (const SoundLabel& label : labels) {
            line[label.identifier] = label.confidence;
        }
        std::cout << line.dump() << '\n';
    });
    const AudioFormat format{replay::replayRate, 1};
    if (const auto error = tagger.prepare(format)) {
        throw std::runtime_error(*error);
    }
    recording.readBuffers([&](std::vector<float> samples) {
        const auto position = static_cast<std::int64_t>(frames);
        frames += samples.size();
        tagger.analyze(PcmBuffer(format, std::move(samples)), position);
    });
    if (recording.damage()) {
        throw replay::InputError(path + ": the recording is damaged (" + *recording.damage() + ")");
    }
}

void run(std::vector<std::string> arguments, const char* calledBy) {
    std::optional<std::filesystem::path> path;
    if (!arguments.empty() && arguments[0] == "--model") {
        if (arguments.size() < 2) {
            throw UsageError("--model needs a value");
        }
        path = arguments[1];
        arguments.erase(arguments.begin(), arguments.begin() + 2);
    } else {
        path = findDataFile(programPath(calledBy), "sound-model.bin");
    }
    if (arguments.empty()) {
        throw UsageError("no recording given");
    }
    if (!path) {
        throw std::runtime_error("no sound model found");
    }
    const SoundModel model = loadSoundModel(*path);
    for (const std::string& recording : arguments) {
        tag(model, recording);
    }
}

}  // namespace

int main(int argc, char** argv) {
    std::ios::sync_with_stdio(false);
    try {
        const std::vector<std::string> arguments(argv + 1, argv + argc);
        if (!arguments.empty() && arguments[0] == "--help") {
            std::cout << usage;
        } else {
            run(arguments, argv[0]);
        }
    } catch (const UsageError& error) {
        std::cerr << "sordin-tag: " << error.what() << " (see --help)\n";
        return 2;
    } catch (const std::exception& error) {
        std::cerr << "sordin-tag: " << error.what() << '\n';
        return 1;
    }
    return std::cout.flush() ? 0 : 1;
}
