// SPDX-License-Identifier: MIT
// sordin-replay: the detector over recordings, for developers and for the curious.
#include "classifier/sound_model_file.h"
#include "classifier/sound_model_location.h"
#include "replay/audio_file.h"
#include "replay/input_error.h"
#include "replay/options.h"
#include "replay/progress_bar.h"
#include "replay/report.h"
#include "support/program_path.h"

#include <chrono>
#include <exception>
#include <iostream>
#include <memory>

namespace {

using namespace sordin::replay;

constexpr int failed = 1;
constexpr int misused = 2;

/// Bytes that are no UTF-8, as file names may hold, are replaced rather than refused.
void printLine(const nlohmann::ordered_json& json) {
    std::cout << json.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << '\n';
}

void printReport(const Options& options, const Report& report) {
    if (options.json || (options.hops && options.truth)) {
        printLine(reportJson(report));
    } else if (!options.hops) {
        std::cout << reportText(report);
    }
}

/// The sound model that the options ask for.
class Models {
public:
    /// Reads a model that is named; throws SoundModelError.
    Models(const Options& options, const char* calledBy) : calledBy_(calledBy), settled_(options.noModel) {
        if (options.model) {
            use(*options.model);
        }
    }

    /// The model; the program's own is read when it is first asked for. None, with a warning, if there is
    /// none.
    [[nodiscard]] std::shared_ptr<const sordin::SoundModel> get() {
        if (!settled_) {
            if (const auto path = sordin::findSoundModel(sordin::programPath(calledBy_))) {
                use(*path);
            } else {
                std::cerr << "sordin-replay: there is no sound model, so neither music nor speech is heard\n";
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

/// Replays one recording and prints what was found; false if it ended early by damage.
bool replayFile(const Options& options, Models& models, const std::string& path) {
    CueTrack cues = options.cues ? CueTrack::read(std::filesystem::path(*options.cues)) : CueTrack();
    const auto truth =
        options.truth ? std::optional(readAdLabels(std::filesystem::path(*options.truth))) : std::nullopt;
    AudioFile recording(path);
    // Cues that name scores are there to be believed.
    const auto model = cues.namesScores() ? nullptr : models.get();

    HopHandler onHop;
    if (options.hops) {
        onHop = [](double time, const auto& hop) { printLine(hopJson(time, hop)); };
    }
    Report report;
    report.file = path;
    const auto start = std::chrono::steady_clock::now();
    {
        ProgressBar bar(!options.hops);
        report.result = replay(recording, path, options.settings, {std::move(cues), model}, onHop,
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
    if (recording.damage()) {
        std::cerr << "sordin-replay: " << path << ": the recording is damaged (" << *recording.damage()
                  << ")\n";
        return false;
    }
    return true;
}

int run(const Options& options, const char* calledBy) {
    Models models(options, calledBy);
    int status = 0;
    for (const std::string& path : options.files) {
        try {
            if (!replayFile(options, models, path)) {
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
        std::cerr << "sordin-replay: the output cannot be written\n";
        return failed;
    }
    return status;
}
