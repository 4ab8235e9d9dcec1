// SPDX-License-Identifier: MIT
// sordin-replay: runs the detector over recordings.
#include "classifier/sound_model_file.h"
#ifdef __linux__
#include "platform/linux/speech/linux_speech_recogniser.h"
#endif
#include "replay/audio_file.h"
#include "replay/input_error.h"
#include "replay/options.h"
#include "replay/picture.h"
#include "replay/progress_bar.h"
#include "replay/report.h"
#include "support/atomic_file.h"
#include "support/manual_serial_queue.h"
#include "support/own_files.h"
#include "support/program_path.h"

#include <chrono>
#include <exception>
#include <iostream>
#include <memory>

namespace {

using namespace sordin::replay;

constexpr int failed = 1;
constexpr int misused = 2;

/// Replaces invalid UTF-8, which file names can contain, so that printing does not fail.
void printLine(const nlohmann::ordered_json& json) {
    std::cout << json.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << '\n';
}

void printReport(const Options& options, const Report& report) {
    if (options.json || (options.hops && (options.truth || options.transcripts))) {
        printLine(reportJson(report));
    } else if (!options.hops) {
        std::cout << reportText(report);
    }
}

/// The sound model that the options select.
class Models {
public:
    /// Loads a model named in the options. Throws SoundModelError.
    Models(const Options& options, const char* calledBy) : calledBy_(calledBy), settled_(options.noModel) {
        if (options.model) {
            use(*options.model);
        }
    }

    /// Returns the model; the installed one is loaded at the first call. If there is none, prints a warning
    /// and returns null.
    [[nodiscard]] std::shared_ptr<const sordin::SoundModel> get() {
        if (!settled_) {
            if (const auto path = sordin::findDataFile(sordin::programPath(calledBy_), "sound-model.bin")) {
                use(*path);
            } else {
                std::cerr << "sordin-replay: no sound model found, so music and speech are not recognized\n";
            }
        }
        settled_ = true;
        return model_;
    }

private:
    void use(const std::filesystem::path& path) {
        model_ = std::make_shared<const sordin::SoundModel>(sordin::loadSoundModel(path));
        settled_ = true;
    }

    const char* calledBy_;
    bool settled_;
    std::shared_ptr<const sordin::SoundModel> model_;
};

/// Creates a recognizer for each recording, in the same state as in a newly started program.
class Recognisers {
public:
    explicit Recognisers(const char* calledBy) : program_(sordin::programPath(calledBy)) {}

    /// Returns null, with a single warning, if the speech model is not installed.
    [[nodiscard]] std::shared_ptr<sordin::SpeechRecogniser> get() {
        auto recogniser = platformRecogniser();
        if (recogniser != nullptr && recogniser->available()) {
            return recogniser;
        }
        if (!warned_) {
            std::cerr << "sordin-replay: no speech model found, so nothing is transcribed\n";
            warned_ = true;
        }
        return nullptr;
    }

private:
    [[nodiscard]] std::shared_ptr<sordin::SpeechRecogniser> platformRecogniser() const {
#ifdef __linux__
        return sordin::linuxSpeechRecogniser(std::make_shared<sordin::ManualSerialQueue>("sordin.speech"),
                                             program_, sordin::patienceForRecordings);
#else
        return nullptr;
#endif
    }

    std::filesystem::path program_;
    bool warned_ = false;
};

/// Replays one recording with one set of rules, prints the result, and adds it to `picture` if that is not
/// null. Returns false if the audio was not processed completely: the recording is damaged, or the speech
/// decoder failed.
bool replayByRules(const Options& options, const NamedRules& rules, Models& models, Recognisers& recognisers,
                   const std::string& path, Picture* picture) {
    CueTrack cues = options.cues ? CueTrack::read(std::filesystem::path(*options.cues)) : CueTrack();
    const auto truth =
        options.truth ? std::optional(readAdLabels(std::filesystem::path(*options.truth))) : std::nullopt;
    AudioFile recording(path);
    // Scores in the cues replace those of the sound model.
    const auto model = cues.namesScores() ? nullptr : models.get();
    const auto recogniser =
        cues.namesTranscripts() || !options.settings.transcription ? nullptr : recognisers.get();
    Settings settings = options.settings;
    settings.rules = rules.rules;

    Panel panel{rules.name.empty() ? "standard" : rules.name, settings.threshold, {}, {}};
    const HopHandler onHop = [&](const ReplayedHop& hop) {
        if (options.hops) {
            printLine(hopJson(hop, options.transcripts));
        }
        if (picture != nullptr) {
            panel.points.push_back({hop.time, hop.observation.verdict.confidence});
        }
    };
    Report report;
    report.file = path;
    report.rules = rules.name;
    report.transcripts = options.transcripts;
    const auto start = std::chrono::steady_clock::now();
    {
        ProgressBar bar(!options.hops);
        report.result = replay(recording, path, settings, {std::move(cues), model, recogniser},
                               options.hops || picture != nullptr ? onHop : HopHandler(),
                               [&](std::optional<double> share) { bar.show(share); });
    }
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
    report.speed = report.result.duration / taken.count();
    if (truth) {
        std::vector<Interval> found;
        for (const FoundAd& ad : report.result.ads) {
            found.push_back(ad.interval);
        }
        report.evaluation = evaluate(found, *truth, report.result.duration);
    }
    printReport(options, report);
    const auto speechFailure = report.result.speechFailure;
    if (picture != nullptr) {
        panel.result = std::move(report.result);
        picture->truth = truth;
        picture->panels.push_back(std::move(panel));
    }
    if (speechFailure) {
        std::cerr << "sordin-replay: " << path << ": the transcription is incomplete (" << *speechFailure
                  << ")\n";
    }
    if (recording.damage()) {
        std::cerr << "sordin-replay: " << path << ": the recording is damaged (" << *recording.damage()
                  << ")\n";
    }
    return !speechFailure && !recording.damage();
}

/// Replays one recording with all selected rules and draws the picture.
bool replayFile(const Options& options, Models& models, Recognisers& recognisers, const std::string& path) {
    Picture picture;
    picture.file = std::filesystem::path(path).filename().string();
    bool whole = true;
    for (const NamedRules& rules : options.rules) {
        whole =
            replayByRules(options, rules, models, recognisers, path, options.picture ? &picture : nullptr) &&
            whole;
    }
    if (options.picture) {
        const auto error =
            sordin::replaceFile(*options.picture, pictureSvg(picture), sordin::Durability::programEnd);
        if (error) {
            throw InputError(*options.picture + ": " + error.message());
        }
    }
    return whole;
}

int run(const Options& options, const char* calledBy) {
    Models models(options, calledBy);
    Recognisers recognisers(calledBy);
    int status = 0;
    for (const std::string& path : options.files) {
        try {
            if (!replayFile(options, models, recognisers, path)) {
                status = failed;
            }
        } catch (const InputError& error) {
            std::cerr << "sordin-replay: " << error.what() << '\n';
            status = failed;
        }
    }
    return status;
}

}  // namespace

int main(int argc, char** argv) {
    std::ios::sync_with_stdio(false);
    int status = 0;
    try {
        const Options options = parseOptions({argv, argv + argc});
        if (options.help) {
            std::cout << helpText();
        } else if (options.version) {
            std::cout << "sordin-replay " SORDIN_VERSION "\n";
        } else {
            status = run(options, argv[0]);
        }
    } catch (const UsageError& error) {
        std::cerr << "sordin-replay: " << error.what() << " (see --help)\n";
        return misused;
    } catch (const std::exception& error) {
        std::cerr << "sordin-replay: " << error.what() << '\n';
        return failed;
    }
    if (!std::cout.flush()) {
        std::cerr << "sordin-replay: cannot write the output\n";
        return failed;
    }
    return status;
}
