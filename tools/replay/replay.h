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

/// The settings of the detector.
struct Settings {
    float threshold = 0.575F;
    bool transcription = true;
    DetectorRules rules;
};

/// The sources of classification and transcription.
struct Hearing {
    CueTrack cues;
    std::shared_ptr<const SoundModel> model;       ///< classifies the sound; the cues do if it is null
    std::shared_ptr<SpeechRecogniser> recogniser;  ///< transcribes; the cues do if it is null
};

/// An ad that the program would have faded.
struct FoundAd {
    Interval interval;  ///< from the end of the hop that starts the ad to the end of the hop that ends it
    float peak = 0;     ///< highest confidence, 0 to 1
    std::vector<std::string> reasons;
    bool cutOff = false;  ///< the recording ended during the ad
};

/// A transcription session, with the text as it was recognized then.
struct Transcript {
    /// An advertising phrase and when it was first recognized.
    struct HeardPhrase {
        double time;            ///< seconds from the start of the recording
        std::string_view text;  ///< points to a constant
    };

    Interval interval;
    std::string text;
    float score = 0;                   ///< highest keyword score during the session, 0 to 1
    std::vector<HeardPhrase> phrases;  ///< in chronological order
};

struct ReplayResult {
    double duration = 0;  ///< seconds
    std::vector<FoundAd> ads;
    std::vector<Transcript> transcripts;
    /// Why the transcription is incomplete; none if it is complete.
    std::optional<std::string> speechFailure;
};

/// One hop of a recording.
struct ReplayedHop {
    double time;  ///< end of the hop, seconds from the start of the recording
    const DetectionPipeline::HopObservation& observation;
    /// Keyword score of the transcript that was read at this hop, 0 to 1; none if none was read.
    std::optional<float> transcriptScore;
};

/// Called after each hop.
using HopHandler = std::function<void(const ReplayedHop&)>;
/// Called from time to time with the completed share of the recording, 0 to 1 (none if unknown).
using ProgressHandler = std::function<void(std::optional<double>)>;

/// Runs the detector over a recording as if it were playing. The clock follows the sample position, so that
/// the same recording always gives the same result. The handlers may be empty. Throws InputError if the
/// recording contains no audio.
[[nodiscard]] ReplayResult replay(AudioFile& recording, const std::string& name, const Settings& settings,
                                  Hearing hearing, const HopHandler& onHop,
                                  const ProgressHandler& onProgress);

}  // namespace sordin::replay
