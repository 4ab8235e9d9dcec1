// SPDX-License-Identifier: MIT
#include "replay/options.h"

#include "detection/sensitivity.h"
#include "support/numbers.h"

#include <array>
#include <getopt.h>

namespace sordin::replay {

namespace {

enum Code : int {
    hops = 1,
    json,
    cues,
    truth,
    model,
    noModel,
    threshold,
    sensitivity,
    noTranscription,
    transcribe,
    rules,
    picture,
    help,
    version
};

constexpr std::array<option, 15> longOptions{{
    {"hops", no_argument, nullptr, hops},
    {"json", no_argument, nullptr, json},
    {"cues", required_argument, nullptr, cues},
    {"truth", required_argument, nullptr, truth},
    {"model", required_argument, nullptr, model},
    {"no-model", no_argument, nullptr, noModel},
    {"threshold", required_argument, nullptr, threshold},
    {"sensitivity", required_argument, nullptr, sensitivity},
    {"no-transcription", no_argument, nullptr, noTranscription},
    {"transcribe", no_argument, nullptr, transcribe},
    {"rules", required_argument, nullptr, rules},
    {"picture", required_argument, nullptr, picture},
    {"help", no_argument, nullptr, help},
    {"version", no_argument, nullptr, version},
    {nullptr, 0, nullptr, 0},
}};

double unitNumber(const std::string& name, const char* text) {
    const auto value = parseNumber(text);
    if (!value || *value < 0 || *value > 1) {
        throw UsageError(name + " takes a number from 0 to 1, not '" + text + "'");
    }
    return *value;
}

std::vector<NamedRules> namedRules(const std::string& name) {
    const NamedRules standard{"standard", standardRules()};
    const NamedRules tuned{"tuned", tunedRules()};
    if (name == "both") {
        return {standard, tuned};
    }
    for (const NamedRules& rules : {standard, tuned}) {
        if (name == rules.name) {
            return {rules};
        }
    }
    throw UsageError("--rules takes standard, tuned or both, not '" + name + "'");
}

void check(const Options& options, bool bothLevels) {
    if (bothLevels) {
        throw UsageError("--threshold and --sensitivity exclude each other");
    }
    if (options.model && options.noModel) {
        throw UsageError("--model and --no-model exclude each other");
    }
    if (options.transcripts && !options.settings.transcription) {
        throw UsageError("--transcribe and --no-transcription exclude each other");
    }
    if (options.files.empty()) {
        throw UsageError("no recording given");
    }
    if (options.files.size() > 1 && (options.cues || options.truth || options.picture)) {
        throw UsageError("--cues, --truth and --picture work with one recording only");
    }
    if (options.hops && options.rules.size() > 1) {
        throw UsageError("--hops works with one set of rules only");
    }
}

}  // namespace

Options parseOptions(std::vector<std::string> arguments) {
    std::vector<char*> argv;
    argv.reserve(arguments.size() + 1);
    for (std::string& argument : arguments) {
        argv.push_back(argument.data());
    }
    argv.push_back(nullptr);

    Options options;
    bool thresholdGiven = false;
    bool sensitivityGiven = false;
    optind = 0;  // resets getopt, also for a second call
    opterr = 0;
    int code = 0;
    while ((code = getopt_long(static_cast<int>(arguments.size()), argv.data(), ":h", longOptions.data(),
                               nullptr)) != -1) {
        switch (code) {
        case hops:
            options.hops = true;
            break;
        case json:
            options.json = true;
            break;
        case cues:
            options.cues = optarg;
            break;
        case truth:
            options.truth = optarg;
            break;
        case model:
            options.model = optarg;
            break;
        case noModel:
            options.noModel = true;
            break;
        case threshold:
            options.settings.threshold = static_cast<float>(unitNumber("--threshold", optarg));
            thresholdGiven = true;
            break;
        case sensitivity:
            options.settings.threshold = detectionThreshold(unitNumber("--sensitivity", optarg));
            sensitivityGiven = true;
            break;
        case noTranscription:
            options.settings.transcription = false;
            break;
        case transcribe:
            options.transcripts = true;
            break;
        case rules:
            options.rules = namedRules(optarg);
            break;
        case picture:
            options.picture = optarg;
            break;
        case 'h':
        case help:
            options.help = true;
            return options;
        case version:
            options.version = true;
            return options;
        case ':':
            throw UsageError(std::string(argv[static_cast<std::size_t>(optind - 1)]) + " needs a value");
        default: {
            // For a short option in a group, getopt has not advanced beyond the word.
            const bool isShort = optopt > version;
            throw UsageError("bad option '" +
                             (isShort ? std::string{'-', static_cast<char>(optopt)}
                                      : std::string(argv[static_cast<std::size_t>(optind - 1)])) +
                             "'");
        }
        }
    }
    for (char** file = argv.data() + optind; *file != nullptr; ++file) {
        options.files.emplace_back(*file);
    }
    check(options, thresholdGiven && sensitivityGiven);
    return options;
}

std::string helpText() {
    return "Usage: sordin-replay [OPTION]... FILE...\n"
           "Runs Sordin's ad detector over recordings as if they were playing, and prints the ads found.\n"
           "Reads WAV, FLAC, Ogg Vorbis, Opus, MP3, AIFF, AU, CAF and the other formats of libsndfile.\n"
           "Convert others (M4A, MP4, WebM) first, for example: ffmpeg -i FILE -ac 1 -ar 16000 out.wav\n"
           "\n"
           "  --json              print one JSON object per recording instead of a table\n"
           "  --hops              print one JSON object per half-second hop instead of a table\n"
           "  --cues FILE         read results of classifier and transcriber from JSON lines\n"
           "  --truth FILE        compare with a label track of the real ads\n"
           "  --model FILE        use this sound model (default: the installed one)\n"
           "  --no-model          use no sound model; music and speech come only from the cues\n"
           "  --threshold T       confidence that begins an ad, 0 to 1 (default 0.575)\n"
           "  --sensitivity S     the program's sensitivity, 0 to 1: threshold 0.8 - 0.45 S\n"
           "  --rules R           standard (default), tuned (the program's \"Tuned detection\") or both\n"
           "  --picture FILE      draw confidence, ads and words over time into an SVG file\n"
           "  --transcribe        print the transcripts of suspicious segments\n"
           "  --no-transcription  disable transcription\n"
           "  -h, --help          print this help\n"
           "  --version           print the version\n"
           "\n"
           "Exit status: 0 if all recordings were replayed, 1 if a file could not be used or written,\n"
           "2 if the command line is invalid. See sordin-replay(1) for the formats.\n";
}

}  // namespace sordin::replay
