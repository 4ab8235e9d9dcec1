// SPDX-License-Identifier: MIT
#include "replay/cues.h"

#include "replay/input_error.h"
#include "replay/input_file.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <utility>

namespace sordin::replay {

namespace {

/// A parsed line: the values that it sets, without those that it keeps.
struct CueLine {
    double time = 0;
    nlohmann::json fields;

    [[nodiscard]] bool namesScores() const {
        return fields.contains("music") || fields.contains("speech") || fields.contains("jingle");
    }
    [[nodiscard]] bool namesTranscripts() const {
        return fields.contains("transcript") || fields.contains("available");
    }
};

[[noreturn]] void fail(const std::string& where, const std::string& why) {
    throw InputError(where + ": " + why);
}

CueLine parseLine(const std::string& line, const std::string& where) {
    nlohmann::json fields = nlohmann::json::parse(line, nullptr, false);
    if (!fields.is_object()) {
        fail(where, "not a JSON object");
    }
    for (const auto& [key, value] : fields.items()) {
        if (key == "t" || key == "music" || key == "speech" || key == "jingle") {
            if (!value.is_number()) {
                fail(where, "\"" + key + "\" is not a number");
            }
            if (key != "t" && !(value >= 0 && value <= 1)) {
                fail(where, "\"" + key + "\" is not from 0 to 1");
            }
        } else if (key == "transcript") {
            if (!value.is_string()) {
                fail(where, "\"transcript\" is not a text");
            }
        } else if (key == "available") {
            if (!value.is_boolean()) {
                fail(where, "\"available\" is neither true nor false");
            }
        } else {
            fail(where, "unknown field \"" + key + "\"");
        }
    }
    if (!fields.contains("t")) {
        fail(where, "no \"t\"");
    }
    const double time = fields["t"].get<double>();
    return {time, std::move(fields)};
}

CueState applied(CueState state, const nlohmann::json& fields) {
    auto& scores = state.classification;
    scores.music = fields.value("music", scores.music);
    scores.speech = fields.value("speech", scores.speech);
    scores.jingle = fields.value("jingle", scores.jingle);
    state.transcript = fields.value("transcript", state.transcript);
    state.available = fields.value("available", state.available);
    return state;
}

}  // namespace

CueTrack CueTrack::read(std::istream& input, const std::string& name) {
    std::vector<CueLine> lines;
    forEachLine(input, name, [&](const std::string& line, const std::string& where) {
        lines.push_back(parseLine(line, where));
    });
    std::stable_sort(lines.begin(), lines.end(),
                     [](const auto& a, const auto& b) { return a.time < b.time; });
    CueTrack track;
    CueState state;
    for (const CueLine& line : lines) {
        track.namesScores_ = track.namesScores_ || line.namesScores();
        track.namesTranscripts_ = track.namesTranscripts_ || line.namesTranscripts();
        state = applied(std::move(state), line.fields);
        track.cues_.push_back({line.time, state});
    }
    return track;
}

CueTrack CueTrack::read(const std::filesystem::path& path) {
    auto input = openInput(path);
    return read(input, path.string());
}

const CueState& CueTrack::at(double time) {
    while (next_ < cues_.size() && cues_[next_].time <= time) {
        state_ = cues_[next_++].state;
    }
    return state_;
}

}  // namespace sordin::replay
