// SPDX-License-Identifier: MIT
#include "platform/linux/speech/pocketsphinx_decoder.h"

#include <array>
#include <pocketsphinx.h>
#if __has_include(<sphinxbase/ngram_model.h>)
#include <sphinxbase/err.h>
#include <sphinxbase/ngram_model.h>
#define SORDIN_POCKETSPHINX_5 0
#else
#include <pocketsphinx/err.h>
#include <pocketsphinx/model.h>
#define SORDIN_POCKETSPHINX_5 1
#endif
#include <string>
#include <string_view>

namespace sordin {

namespace {

constexpr float advertisingWeight = 0.2F;  // of the advertising n-grams; the rest is the general model's
constexpr double languageWeight = 9;
constexpr double secondsOfAFrame = 0.01;
/// Converts acoustic scores to natural logarithms. The scores are relative to the best one of the frame, with
/// base 1.0001, and without the lowest ten bits.
constexpr double scoreInNaturalLogarithms = 1024 * 1e-4;

#if SORDIN_POCKETSPHINX_5
using Configuration = ps_config_t;
void freeConfiguration(Configuration* configuration) {
    ps_config_free(configuration);
}
Configuration* makeConfiguration(const SpeechModelFiles& files) {
    Configuration* made = ps_config_init(nullptr);
    if (made != nullptr) {
        ps_config_set_str(made, "hmm", files.acousticModel.c_str());
        ps_config_set_str(made, "lm", files.generalLanguage.c_str());
        ps_config_set_str(made, "dict", files.dictionary.c_str());
        ps_config_set_float(made, "lw", languageWeight);
        ps_config_set_bool(made, "remove_noise", 1);
        ps_config_set_bool(made, "fwdflat", 0);
        ps_config_set_bool(made, "bestpath", 0);
    }
    return made;
}
const char* searchOf(ps_decoder_t* decoder) {
    return ps_current_search(decoder);
}
bool useLanguage(ps_decoder_t* decoder, const char* name, ngram_model_t* model) {
    return ps_add_lm(decoder, name, model) == 0 && ps_activate_search(decoder, name) == 0;
}
#else
using Configuration = cmd_ln_t;
void freeConfiguration(Configuration* configuration) {
    cmd_ln_free_r(configuration);
}
Configuration* makeConfiguration(const SpeechModelFiles& files) {
    return cmd_ln_init(nullptr, ps_args(), TRUE, "-hmm", files.acousticModel.c_str(), "-lm",
                       files.generalLanguage.c_str(), "-dict", files.dictionary.c_str(), "-lw",
                       std::to_string(languageWeight).c_str(), "-remove_noise", "yes", "-fwdflat", "no",
                       "-bestpath", "no", nullptr);
}
const char* searchOf(ps_decoder_t* decoder) {
    return ps_get_search(decoder);
}
bool useLanguage(ps_decoder_t* decoder, const char* name, ngram_model_t* model) {
    return ps_set_lm(decoder, name, model) == 0 && ps_set_search(decoder, name) == 0;
}
#endif

struct Free {
    void operator()(Configuration* configuration) const { freeConfiguration(configuration); }
    void operator()(ps_decoder_t* decoder) const { ps_free(decoder); }
    void operator()(ngram_model_t* model) const { ngram_model_free(model); }
};
template <class Handle>
using Owned = std::unique_ptr<Handle, Free>;

void require(bool done, const char* what) {
    if (!done) {
        throw SpeechDecoderError(what);
    }
}

}  // namespace

class PocketSphinxDecoder::Engine {
public:
    explicit Engine(const SpeechModelFiles& files) {
        err_set_logfp(nullptr);
        configuration_.reset(makeConfiguration(files));
        require(configuration_ != nullptr, "the speech decoder rejected its settings");
        decoder_.reset(ps_init(configuration_.get()));
        require(decoder_ != nullptr, "cannot load the speech model");
        mixLanguages(files);
    }

    void begin() {
        require(ps_start_stream(decoder_.get()) == 0 && ps_start_utt(decoder_.get()) == 0,
                "the speech decoder cannot begin an utterance");
        decoding_ = true;
    }

    void process(std::span<const std::int16_t> samples) {
        require(ps_process_raw(decoder_.get(), samples.data(), samples.size(), 0, 0) >= 0,
                "the speech decoder failed");
    }

    void end() {
        if (decoding_) {
            ps_end_utt(decoder_.get());
            decoding_ = false;
        }
    }

    [[nodiscard]] std::vector<HeardWord> words() {
        std::vector<HeardWord> words;
        for (ps_seg_t* at = ps_seg_iter(decoder_.get()); at != nullptr; at = ps_seg_next(at)) {
            const std::string_view word = ps_seg_word(at);
            if (!isSilenceOrNoise(word)) {
                words.push_back(heard(word, at));
            }
        }
        return words;
    }

private:
    static bool isSilenceOrNoise(std::string_view word) {
        return word.starts_with('<') || word.starts_with('[') || word.starts_with('+');
    }
    static HeardWord heard(std::string_view word, ps_seg_t* at) {
        int first = 0;
        int last = 0;
        ps_seg_frames(at, &first, &last);
        std::int32_t acoustic = 0;
        ps_seg_prob(at, &acoustic, nullptr, nullptr);
        const int frames = last - first + 1;
        // The second of several pronunciations is "word(2)".
        return {std::string(word.substr(0, word.find('('))), frames * secondsOfAFrame,
                scoreInNaturalLogarithms * acoustic / frames};
    }
    void mixLanguages(const SpeechModelFiles& files) {
        ngram_model_t* general = ps_get_lm(decoder_.get(), searchOf(decoder_.get()));
        const Owned<ngram_model_t> advertising(ngram_model_read(configuration_.get(),
                                                                files.advertisingLanguage.c_str(), NGRAM_AUTO,
                                                                ps_get_logmath(decoder_.get())));
        require(general != nullptr && advertising != nullptr, "cannot load the advertising language model");
        std::array<ngram_model_t*, 2> models{general, advertising.get()};
        std::string first = "general";
        std::string second = "advertising";
        std::array<char*, 2> names{first.data(), second.data()};
        const std::array<float, 2> weights{1 - advertisingWeight, advertisingWeight};
        const Owned<ngram_model_t> mixed(ngram_model_set_init(configuration_.get(), models.data(),
                                                              names.data(), weights.data(), models.size()));
        require(mixed != nullptr && useLanguage(decoder_.get(), "mixed", mixed.get()),
                "cannot mix the language models");
    }

    Owned<Configuration> configuration_;
    Owned<ps_decoder_t> decoder_;
    bool decoding_ = false;
};

PocketSphinxDecoder::PocketSphinxDecoder(const SpeechModelFiles& files)
    : engine_(std::make_unique<Engine>(files)) {}

PocketSphinxDecoder::~PocketSphinxDecoder() = default;

void PocketSphinxDecoder::begin() {
    engine_->end();
    engine_->begin();
}

void PocketSphinxDecoder::process(std::span<const std::int16_t> samples) {
    engine_->process(samples);
}

void PocketSphinxDecoder::end() {
    engine_->end();
}

std::vector<HeardWord> PocketSphinxDecoder::words() {
    return engine_->words();
}

}  // namespace sordin
