// SPDX-License-Identifier: MIT
#pragma once

#include "detection/detection_pipeline.h"
#include "detection/detector_rules.h"
#include "replay/audio_file.h"
#include "replay/cues.h"
#include "replay/labels.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sordin {
class SpeechRecogniser;
struct SoundModel;
}  // namespace sordin

namespace sordin::replay {

/// How the detector is set.
struct Settings {
    float threshold = 0.575F;
    bool transcription = true;
    DetectorRules rules;
};

/// What the detector hears with.
struct Hearing {
    CueTrack cues;
    std::shared_ptr<const SoundModel> model;       ///< classifies the sound; without one the cues do
    std::shared_ptr<SpeechRecogniser> recogniser;  ///< transcribes; without one the cues do
};

/// One ad as the program would have faded it.
struct FoundAd {
    Interval interval;  ///< from the end of the hop that starts it to the end of the hop that ends it
    float peak = 0;     ///< highest confidence, 0 to 1
    std::vector<std::string> reasons;
    bool cutOff = false;  ///< the recording ended before the ad
};

/// What was said while something looked suspicious, as it was understood then.
struct Transcript {
    /// An advertising phrase, when it was first understood.
    struct HeardPhrase {
        double time;            ///< seconds from the start of the recording
        std::string_view text;  ///< a constant of the program
    };

    Interval interval;
    std::string text;
    float score = 0;  ///< the highest while it ran: how much it reads like an advertisement, 0 to 1
    std::vector<HeardPhrase> phrases;  ///< in the order of time
};

struct ReplayResult {
    double duration = 0;  ///< seconds
    std::vector<FoundAd> ads;
    std::vector<Transcript> transcripts;
    std::optional<std::string> speechFailure;  ///< why not all that could be was transcribed
};

/// One hop of a recording.
struct ReplayedHop {
    double time;  ///< its end, seconds from the start of the recording
    const DetectionPipeline::HopObservation& observation;
    /// How much the transcript that was read on this hop reads like an advertisement, 0 to 1; none if none
    /// was.
    std::optional<float> transcriptScore;
};

/// Called after each hop.
using HopHandler = std::function<void(const ReplayedHop&)>;
/// Called now and then with the share of the recording done, 0 to 1 (none when unknown).
using ProgressHandler = std::function<void(std::optional<double>)>;

/// Runs the detector over a recording as if it were playing, with the clock at the sample position, so that
/// the same recording always gives the same result. The handlers may be empty. Throws InputError for a
/// recording without any audio.
[[nodiscard]] ReplayResult replay(AudioFile& recording, const std::string& name, const Settings& settings,
                                  Hearing hearing, const HopHandler& onHop,
                                  const ProgressHandler& onProgress);

}  // namespace sordin::replay
