// SPDX-License-Identifier: MIT
#pragma once

#include "detection/detection_records.h"

#include <filesystem>
#include <iosfwd>
#include <string>
#include <vector>

namespace sordin::replay {

/// The values that the stand-ins for classifier and transcriber return at a time.
struct CueState {
    SoundClassification classification;
    std::string transcript;
    bool available = true;
};

/// The values over a whole recording.
class CueTrack {
public:
    /// Creates a track without cues; the state is always the initial one.
    CueTrack() = default;

    /// Reads JSON lines with "t" (seconds, required) and any of "music", "speech", "jingle", "transcript" and
    /// "available"; absent fields keep their value. The lines can have any order; for equal times, the later
    /// line counts. Throws InputError with `name` and the line number.
    static CueTrack read(std::istream& input, const std::string& name);
    static CueTrack read(const std::filesystem::path& path);

    /// Whether any line sets "music", "speech" or "jingle".
    [[nodiscard]] bool namesScores() const { return namesScores_; }

    /// Whether any line sets "transcript" or "available".
    [[nodiscard]] bool namesTranscripts() const { return namesTranscripts_; }

    /// Returns the state for a hop that ends at `time`, including the cues at that time. Call it in
    /// chronological order.
    [[nodiscard]] const CueState& at(double time);

private:
    struct Cue {
        double time;
        CueState state;  // complete, including values of earlier cues
    };

    std::vector<Cue> cues_;  // by time
    bool namesScores_ = false;
    bool namesTranscripts_ = false;
    std::size_t next_ = 0;
    CueState state_;
};

}  // namespace sordin::replay
