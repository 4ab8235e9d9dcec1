// SPDX-License-Identifier: MIT
// Arbitrary bytes as a sound model or a speech mask: either rejected, or usable with results in range.
#include "classifier/mask_files.h"
#include "classifier/network_sound_tagger.h"
#include "classifier/sound_model_file.h"
#include "classifier/speech_mask_file.h"
#include "fuzz/require.h"

#include <cmath>
#include <string>

namespace {

using namespace sordin;

/// Whether a second of audio takes only a moment.
bool quick(const SoundModel& model) {
    PlaneSize size = inputSize(model.frontEnd);
    std::size_t work = model.frontEnd.transform * (model.frontEnd.rate / model.frontEnd.hop);
    for (const auto& layer : model.convolutions) {
        size = outputSize(layer, size);
        work += layer.weights.size() * size.times * size.frequencies;
    }
    return work < 2'000'000;
}

void hear(const SoundModel& model) {
    NetworkSoundTagger tagger(model);
    std::size_t results = 0;
    tagger.onLabels([&](std::span<const SoundLabel> labels) {
        require(labels.size() == model.labels.size());
        for (const SoundLabel& label : labels) {
            require(label.confidence >= 0 && label.confidence <= 1);
        }
        ++results;
    });
    const AudioFormat format{static_cast<double>(model.frontEnd.rate), 1};
    require(!tagger.prepare(format));
    std::vector<float> samples(std::size_t{model.frontEnd.rate} * 3 / 2);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i] = static_cast<float>(i * i % 257) / 257.0F - 0.5F;
    }
    tagger.analyze(PcmBuffer(format, samples), 0);
    require(results == 2);
}

void clean(const SpeechMaskModel& model) {
    SpeechMask mask(model);
    std::vector<float> samples(std::size_t{3} * model.window + 1);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i] = static_cast<float>(i * i % 257) / 257.0F - 0.5F;
    }
    std::vector<float> cleaned;
    mask.process(samples, cleaned);
    require(cleaned.size() == std::size_t{3} * model.window);
}

/// `rest` is a whole file, or the payload for one.
void useMask(bool whole, const Bytes& rest) {
    try {
        clean(readSpeechMask(whole ? rest : fileOf(rest, "SORDINVM"), "fuzz"));
    } catch (const SpeechMaskError& error) {
        require(std::string(error.what()).find('\n') == std::string::npos);
    }
}

}  // namespace

// The first byte selects a sound model (or a speech mask, from 254 on), and whether the rest is a whole file
// (0 and 254) or a payload.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const auto given = std::as_bytes(std::span(bytes + 1, size - 1));
    const Bytes rest(given.begin(), given.end());
    if (bytes[0] >= 254) {
        useMask(bytes[0] == 254, rest);
        return 0;
    }
    try {
        const SoundModel model = readSoundModel(bytes[0] == 0 ? rest : fileOf(rest), "fuzz");
        if (quick(model)) {
            hear(model);
        }
    } catch (const SoundModelError& error) {
        require(std::string(error.what()).find('\n') == std::string::npos);
    }
    return 0;
}
