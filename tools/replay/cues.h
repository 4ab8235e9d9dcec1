// SPDX-License-Identifier: MIT
#pragma once

#include "detection/detection_records.h"

#include <filesystem>
#include <iosfwd>
#include <string>
#include <vector>

namespace sordin::replay {

/// What the stand-ins for classifier and transcriber answer at one time.
struct CueState {
    SoundClassification classification;
    std::string transcript;
    bool available = true;
};

/// The answers over a whole recording.
class CueTrack {
public:
    /// No cues: the state is the initial one for ever.
    CueTrack() = default;

    /// Reads JSON lines with "t" (seconds, required) and any of "music", "speech", "jingle", "transcript" and
    /// "available"; what is absent keeps its value. The lines may come in any order; of equal times the later
    /// line wins. Throws InputError, which names `name` and the line.
    static CueTrack read(std::istream& input, const std::string& name);
    static CueTrack read(const std::filesystem::path& path);

    /// Whether any line sets "music", "speech" or "jingle".
    [[nodiscard]] bool namesScores() const { return namesScores_; }

    /// Whether any line sets "transcript" or "available".
    [[nodiscard]] bool namesTranscripts() const { return namesTranscripts_; }

    /// The state for a hop that ends at `time`: all cues up to and including it. Ask in the order of time.
    [[nodiscard]] const CueState& at(double time);

private:
    struct Cue {
        double time;
        CueState state;  // whole, with what earlier cues said
    };

    std::vector<Cue> cues_;  // by time
    bool namesScores_ = false;
    bool namesTranscripts_ = false;
    std::size_t next_ = 0;
    CueState state_;
};

}  // namespace sordin::replay
