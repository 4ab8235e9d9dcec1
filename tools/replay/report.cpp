// SPDX-License-Identifier: MIT
#include "replay/report.h"

#include "replay/text.h"

#include <cmath>
#include <cstdlib>
#include <variant>

namespace sordin::replay {

namespace {

using nlohmann::ordered_json;

/// Returns the shortest decimal that converts back to the same float, so that 0.575 is printed as 0.575; null
/// for values that JSON does not support.
ordered_json number(float value) {
    if (!std::isfinite(value)) {
        return nullptr;
    }
    double decimal = 0;
    for (int digits = 6; digits <= 9; ++digits) {
        decimal = std::strtod(formatted("%.*g", digits, static_cast<double>(value)).c_str(), nullptr);
        if (static_cast<float>(decimal) == value) {
            break;
        }
    }
    return decimal;
}

template <class Value>
ordered_json orNull(const std::optional<Value>& value) {
    return value ? ordered_json(*value) : ordered_json(nullptr);
}

ordered_json delaysJson(const std::optional<Delays>& delays) {
    if (!delays) {
        return nullptr;
    }
    return {{"median", delays->median}, {"percentile90", delays->percentile90}};
}

ordered_json eventJson(const std::optional<AdSegmenter::Event>& event) {
    if (!event) {
        return nullptr;
    }
    if (const auto* ended = std::get_if<AdSegmenter::Ended>(&*event)) {
        return {{"ended",
                 {{"peak", number(ended->summary.peakConfidence)}, {"reasons", ended->summary.reasons}}}};
    }
    return "started";
}

double totalSeconds(const std::vector<FoundAd>& ads) {
    double sum = 0;
    for (const FoundAd& ad : ads) {
        sum += ad.interval.length();
    }
    return sum;
}

std::string joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : ", ") + word;
    }
    return text;
}

std::string adTable(const std::vector<FoundAd>& ads) {
    std::string text = "    #       start         end     length  peak  reasons\n";
    int count = 0;
    for (const FoundAd& ad : ads) {
        const auto& [start, end] = ad.interval;
        text += formatted("  %3d  %10s  %10s  %7.1f s  %3d%%  ", ++count, timeText(start).c_str(),
                          timeText(end).c_str(), ad.interval.length(), percent(static_cast<double>(ad.peak)));
        text += (ad.reasons.empty() ? "none above the rest" : joined(ad.reasons));
        text += ad.cutOff ? " (still on at the end)\n" : "\n";
    }
    return text;
}

std::string transcriptTable(const std::vector<Transcript>& transcripts) {
    if (transcripts.empty()) {
        return "nothing was transcribed\n";
    }
    std::string text = "transcripts:\n       start         end  score  text\n";
    for (const Transcript& transcript : transcripts) {
        text += formatted("  %10s  %10s   %3d%%  ", timeText(transcript.interval.start).c_str(),
                          timeText(transcript.interval.end).c_str(),
                          percent(static_cast<double>(transcript.score)));
        text += transcript.text + '\n';
    }
    return text;
}

std::string shareText(const std::optional<double>& share) {
    return share ? formatted("%.3f", *share) : "-";
}

std::string delaysText(const std::optional<Delays>& delays) {
    return delays ? formatted("median %.1f s, 90th percentile %.1f s", delays->median, delays->percentile90)
                  : "-";
}

std::string eventText(const std::string& name, const EventFigures& figures) {
    const std::string margin = "  " + formatted("%-14s", name.c_str());
    const std::string below(margin.size(), ' ');
    return margin + "precision " + shareText(figures.precision) + ", recall " + shareText(figures.recall) +
           ", F0.5 " + shareText(figures.f05) + " (sharing at least half of their union)\n" + below +
           "reaction " + delaysText(figures.reaction) + "\n" + below + "late release " +
           delaysText(figures.lateRelease) + "\n";
}

std::string evaluationText(const Evaluation& evaluation) {
    return "against the labels:\n"
           "  seconds       precision " +
           shareText(evaluation.precision) + ", recall " + shareText(evaluation.recall) + "\n" +
           eventText("breaks", evaluation.breaks) + eventText("single ads", evaluation.ads) +
           "  false         " +
           (evaluation.falsePerHour ? formatted("%.1f s per hour of programme", *evaluation.falsePerHour)
                                    : "-") +
           "\n";
}

ordered_json eventJson(const EventFigures& figures) {
    return {{"eventPrecision", orNull(figures.precision)},
            {"eventRecall", orNull(figures.recall)},
            {"f05", orNull(figures.f05)},
            {"reaction", delaysJson(figures.reaction)},
            {"lateRelease", delaysJson(figures.lateRelease)}};
}

}  // namespace

ordered_json hopJson(const ReplayedHop& replayed, bool transcripts) {
    const DetectionPipeline::HopObservation& hop = replayed.observation;
    ordered_json db = nullptr;
    ordered_json bands = nullptr;
    if (hop.features) {
        db = number(hop.features->db);
        bands = ordered_json::array();
        for (const float band : hop.features->bands) {
            bands.push_back(number(band));
        }
    }
    ordered_json contributions = ordered_json::array();
    for (const Contribution& contribution : hop.verdict.contributions) {
        contributions.push_back(ordered_json::array({contribution.name, number(contribution.value)}));
    }
    ordered_json json{
        {"t", replayed.time},
        {"silent", hop.signals.silent},
        {"db", std::move(db)},
        {"bands", std::move(bands)},
        {"music", number(hop.signals.music)},
        {"speech", number(hop.signals.speech)},
        {"jingle", number(hop.signals.jingle)},
        {"boundary", number(hop.signals.boundary)},
        {"repetition", number(hop.signals.repetition)},
        {"loudnessRise", number(hop.signals.loudnessRise)},
        {"keyword", number(hop.signals.keyword)},
        {"raw", number(hop.verdict.raw)},
        {"confidence", number(hop.verdict.confidence)},
        {"contributions", std::move(contributions)},
        {"inAd", hop.inAd},
        {"event", eventJson(hop.event)},
        {"transcribing", hop.transcribing},
    };
    if (transcripts) {
        json["transcriptScore"] =
            replayed.transcriptScore ? number(*replayed.transcriptScore) : ordered_json(nullptr);
    }
    return json;
}

ordered_json reportJson(const Report& report) {
    ordered_json ads = ordered_json::array();
    for (const FoundAd& ad : report.result.ads) {
        ads.push_back({{"start", ad.interval.start},
                       {"end", ad.interval.end},
                       {"length", ad.interval.length()},
                       {"peak", number(ad.peak)},
                       {"reasons", ad.reasons},
                       {"cutOff", ad.cutOff}});
    }
    ordered_json json{{"file", report.file}};
    if (!report.rules.empty()) {
        json["rules"] = report.rules;
    }
    json["duration"] = report.result.duration;
    json["ads"] = std::move(ads);
    json["adSeconds"] = totalSeconds(report.result.ads);
    if (report.transcripts) {
        json["transcripts"] = ordered_json::array();
        for (const Transcript& transcript : report.result.transcripts) {
            json["transcripts"].push_back({{"start", transcript.interval.start},
                                           {"end", transcript.interval.end},
                                           {"score", number(transcript.score)},
                                           {"text", transcript.text}});
        }
    }
    if (report.evaluation) {
        const Evaluation& evaluation = *report.evaluation;
        json["truth"] = {{"precision", orNull(evaluation.precision)},
                         {"recall", orNull(evaluation.recall)},
                         {"falseSecondsPerHour", orNull(evaluation.falsePerHour)}};
        json["truth"].update(eventJson(evaluation.breaks));
        json["truth"]["singleAds"] = eventJson(evaluation.ads);
    }
    json["speed"] = std::round(report.speed);
    return json;
}

std::string reportText(const Report& report) {
    const double duration = report.result.duration;
    const auto& ads = report.result.ads;
    std::string text = report.file + ": " + timeText(duration) + " of audio" +
                       (report.rules.empty() ? "" : ", " + report.rules + " rules") + "\n";
    if (ads.empty()) {
        text += "no ads found\n";
    } else {
        const double seconds = totalSeconds(ads);
        text += adTable(ads);
        text += formatted("%zu %s, ", ads.size(), ads.size() == 1 ? "ad" : "ads") + timeText(seconds) +
                formatted(" in all, %d%% of the recording\n", percent(seconds / duration));
    }
    if (report.transcripts) {
        text += transcriptTable(report.result.transcripts);
    }
    if (report.evaluation) {
        text += evaluationText(*report.evaluation);
    }
    text += formatted("%.0f times real time\n", report.speed);
    return text;
}

}  // namespace sordin::replay
