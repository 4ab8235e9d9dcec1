// SPDX-License-Identifier: MIT
// sordin-replay: the detector over recordings, for developers and for the curious.
#include "replay/audio_file.h"
#include "replay/input_error.h"
#include "replay/options.h"
#include "replay/progress_bar.h"
#include "replay/report.h"

#include <chrono>
#include <exception>
#include <iostream>

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

/// Replays one recording and prints what was found; false if it ended early by damage.
bool replayFile(const Options& options, const std::string& path) {
    const CueTrack cues = options.cues ? CueTrack::read(std::filesystem::path(*options.cues)) : CueTrack();
    const auto truth =
        options.truth ? std::optional(readAdLabels(std::filesystem::path(*options.truth))) : std::nullopt;
    AudioFile recording(path);

    HopHandler onHop;
    if (options.hops) {
        onHop = [](double time, const auto& hop) { printLine(hopJson(time, hop)); };
    }
    Report report;
    report.file = path;
    const auto start = std::chrono::steady_clock::now();
    {
        ProgressBar bar(!options.hops);
        report.result = replay(recording, path, options.settings, cues, onHop,
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

int run(const Options& options) {
    int status = 0;
    for (const std::string& path : options.files) {
        try {
            if (!replayFile(options, path)) {
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
            status = run(options);
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
