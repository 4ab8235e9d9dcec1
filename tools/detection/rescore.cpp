// SPDX-License-Identifier: MIT
// sordin-rescore HOPS LABELS [HOPS LABELS]...: applies other rules to recordings whose hops were printed by
// sordin-replay --hops --transcribe (standard rules, default threshold). Used by tools/detection/tune.
//
// The transcription sessions and learned ads are taken from the printed hops. The program's own classes
// compute everything after them again, from the keyword level to the ads.
//
// The first output line is a JSON array with the length and the ads of each recording in seconds. Each input
// line, {"rules": {NAME: NUMBER, ...}, "sensitivities": [NUMBER, ...]}, yields an output line: an array with
// an entry per recording. Each entry contains an array without words and one with words, with an entry per
// sensitivity: the seconds of ads and of other content in which the volume would have been down, and how
// often it would have gone down. With "delays": true, the median and the 90th percentile of the reaction to
// breaks follow, then those of the release after them, in seconds or null. Rules that are not named keep
// their standard value.
#include "detection/ad_segmenter.h"
#include "detection/heuristic_ad_scorer.h"
#include "detection/keyword_memory.h"
#include "detection/sensitivity.h"
#include "replay/evaluation.h"
#include "replay/labels.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <exception>
#include <fstream>
#include <iostream>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace sordin;
using nlohmann::json;

constexpr double hopSeconds = 0.5;

struct Hop {
    double time = 0;             // end of the hop in seconds
    DetectionSignals signals;    // without the keyword level and the time since the last ad
    std::optional<float> score;  // of the transcript that was read at this hop
    bool sessionBegins = false;
    double adSeconds = 0;  // seconds of ads in the half second after the hop
    float confidence = 0;  // as printed
    bool inAd = false;     // after the hop
};

struct Recording {
    std::vector<Hop> hops;
    std::vector<replay::Interval> ads;
    double seconds = 0;
    double adSeconds = 0;
};

/// When the volume would have been down.
struct Faded {
    double ads = 0;        // seconds
    double programme = 0;  // seconds
    std::vector<replay::Interval> stretches;
};

Hop hopFrom(const json& line, bool transcribing) {
    Hop hop;
    hop.time = line.at("t");
    hop.confidence = line.at("confidence");
    hop.inAd = line.at("inAd");
    hop.sessionBegins = !transcribing && line.at("transcribing");
    const json& score = line.at("transcriptScore");
    if (!score.is_null()) {
        hop.score = score.get<float>();
    }
    DetectionSignals& signals = hop.signals;
    signals.silent = line.at("silent");
    signals.music = line.at("music");
    signals.speech = line.at("speech");
    signals.jingle = line.at("jingle");
    signals.boundary = line.at("boundary");
    signals.repetition = line.at("repetition");
    signals.loudnessRise = line.at("loudnessRise");
    return hop;
}

Recording readRecording(const std::string& hops, const std::string& labels) {
    const auto truth = replay::readAdLabels(std::filesystem::path(labels));
    std::ifstream input(hops);
    Recording recording;
    recording.ads = truth;
    bool transcribing = false;
    try {
        for (std::string text; std::getline(input, text);) {
            const json line = json::parse(text);
            if (!line.contains("t")) {
                continue;  // the report after the hops
            }
            recording.hops.push_back(hopFrom(line, transcribing));
            transcribing = line.at("transcribing");
            Hop& hop = recording.hops.back();
            for (const replay::Interval& ad : truth) {
                hop.adSeconds += replay::overlap(ad, {hop.time, hop.time + hopSeconds});
                recording.adSeconds += replay::overlap(ad, {hop.time - hopSeconds, hop.time});
            }
        }
    } catch (const json::exception& error) {
        throw std::runtime_error(hops + ":" + std::to_string(recording.hops.size() + 1) +
                                 ": not a line of sordin-replay --hops --transcribe (" + error.what() + ")");
    }
    if (recording.hops.empty()) {
        throw std::runtime_error(hops + ": no hops");
    }
    recording.seconds = recording.hops.back().time;
    return recording;
}

/// Steps through a recording. Calls `take` with each hop, its confidence, and whether an ad is in progress
/// after it.
template <class Action>
void score(const Recording& recording, const DetectorRules& rules, float threshold, bool words, Action take) {
    KeywordMemory keywords;
    HeuristicAdScorer scorer;
    AdSegmenter segmenter;
    keywords.setRules(rules);
    scorer.setRules(rules);
    segmenter.setRules(rules);
    std::optional<double> lastAdEnd;
    for (const Hop& hop : recording.hops) {
        DetectionSignals signals = hop.signals;
        if (!signals.silent) {
            if (hop.score) {
                keywords.hear(*hop.score);
            }
            if (hop.sessionBegins) {
                keywords.beginSession();
            }
            signals.keyword = keywords.take();
            signals.keywordActive = words;
        }
        if (lastAdEnd) {
            signals.sinceLastAd = hop.time - *lastAdEnd;
        }
        const AdVerdict verdict = scorer.update(signals);
        const auto event = segmenter.update(verdict.confidence, threshold, hopSeconds, verdict.contributions);
        if (event && std::holds_alternative<AdSegmenter::Ended>(*event)) {
            keywords.adEnded();
            lastAdEnd = hop.time;
        }
        take(hop, verdict.confidence, segmenter.inAd());
    }
}

/// Throws if the standard rules do not reproduce the printed values, because other rules then produced them.
void check(const Recording& recording, const std::string& name) {
    constexpr float tolerance = 1e-4F;  // the printed numbers have seven digits
    score(recording, standardRules(), detectionThreshold(0.5), true,
          [&](const Hop& hop, float confidence, bool inAd) {
              if (!(std::abs(confidence - hop.confidence) < tolerance) || inAd != hop.inAd) {
                  throw std::runtime_error(
                      name + ": the hop at " + std::to_string(hop.time) +
                      " s is not what the standard rules give with words at sensitivity 0.5");
              }
          });
}

Faded faded(const Recording& recording, const DetectorRules& rules, double sensitivity, bool words) {
    Faded sum;
    bool before = false;
    score(recording, rules, detectionThreshold(sensitivity), words,
          [&](const Hop& hop, float /*confidence*/, bool inAd) {
              if (inAd && !before) {
                  sum.stretches.push_back({hop.time, hop.time});
              }
              if (inAd || before) {
                  sum.stretches.back().end = hop.time;
              }
              before = inAd;
              if (inAd) {
                  sum.ads += hop.adSeconds;
                  sum.programme += hopSeconds - hop.adSeconds;
              }
          });
    return sum;
}

DetectorRules rulesFrom(const json& named) {
    DetectorRules rules;
    std::size_t taken = 0;
    const auto take = [&]<class Value>(const char* name, Value& value) {
        if (const auto entry = named.find(name); entry != named.end()) {
            entry->get_to(value);
            ++taken;
        }
    };
    take("audio", rules.weights.audio);
    take("keywords", rules.weights.keywords);
    take("boundary", rules.weights.boundary);
    take("repetition", rules.weights.repetition);
    take("timing", rules.weights.timing);
    take("loudness", rules.weights.loudness);
    take("boundaryMemory", rules.boundaryMemory);
    take("smoothing", rules.smoothing);
    take("keywordMemory", rules.keywordMemory);
    take("keywordsFadeWhenHeard", rules.keywordsFadeWhenHeard);
    take("keywordsAfterAd", rules.keywordsAfterAd);
    take("strongMargin", rules.strongMargin);
    take("strongRun", rules.strongRun);
    take("weakRun", rules.weakRun);
    take("exitMargin", rules.exitMargin);
    take("holdSeconds", rules.holdSeconds);
    if (taken != named.size()) {
        throw std::runtime_error("unknown names of rules in " + named.dump());
    }
    return rules;
}

void addDelays(json& figures, const std::optional<replay::Delays>& delays) {
    figures.push_back(delays ? json(delays->median) : json());
    figures.push_back(delays ? json(delays->percentile90) : json());
}

json answer(const json& request, const std::vector<Recording>& recordings) {
    const DetectorRules rules = rulesFrom(request.at("rules"));
    const bool delays = request.value("delays", false);
    json result = json::array();
    for (const Recording& recording : recordings) {
        json ofRecording = json::array();
        for (const bool words : {false, true}) {
            json ofWords = json::array();
            for (const double sensitivity : request.at("sensitivities")) {
                const Faded sum = faded(recording, rules, sensitivity, words);
                json figures{sum.ads, sum.programme, sum.stretches.size()};
                if (delays) {
                    const auto breaks =
                        replay::evaluate(sum.stretches, recording.ads, recording.seconds).breaks;
                    addDelays(figures, breaks.reaction);
                    addDelays(figures, breaks.lateRelease);
                }
                ofWords.push_back(std::move(figures));
            }
            ofRecording.push_back(std::move(ofWords));
        }
        result.push_back(std::move(ofRecording));
    }
    return result;
}

void run(std::span<char*> arguments) {
    std::vector<Recording> recordings;
    json lengths = json::array();
    for (; !arguments.empty(); arguments = arguments.subspan(2)) {
        recordings.push_back(readRecording(arguments[0], arguments[1]));
        check(recordings.back(), arguments[0]);
        lengths.push_back(
            {{"seconds", recordings.back().seconds}, {"adSeconds", recordings.back().adSeconds}});
    }
    std::cout << lengths << std::endl;
    for (std::string line; std::getline(std::cin, line);) {
        std::cout << answer(json::parse(line), recordings) << std::endl;
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3 || argc % 2 == 0) {
        std::cerr << "usage: sordin-rescore HOPS LABELS [HOPS LABELS]...\n";
        return 2;
    }
    try {
        run(std::span(argv, static_cast<std::size_t>(argc)).subspan(1));
    } catch (const std::exception& error) {
        std::cerr << "sordin-rescore: " << error.what() << '\n';
        return 1;
    }
    return 0;
}
