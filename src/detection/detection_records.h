// SPDX-License-Identifier: MIT
// Value types of the detector. Confidences, strengths, scores and shares are 0 to 1, levels are in decibels,
// times are in seconds of the pipeline's clock.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sordin {

/// Number of octave bands that describe a hop.
inline constexpr std::size_t bandCount = 8;

/// Band energies in dB (10 log10), lowest band first.
using Bands = std::array<float, bandCount>;

/// One named share of the ad evidence.
struct Contribution {
    /// One of the scorer's signal names, a string constant with static storage duration.
    std::string_view name;
    float value = 0;  ///< the signal's weight times its strength
};

/// The shares of one hop in the order of the scorer's weights; empty on a silent hop. Holds up to `capacity`
/// entries without heap allocation, because the scorer makes one on every hop.
class Contributions {
public:
    static constexpr std::size_t capacity = 6;

    /// Appends an entry. Drops it if there are `capacity` entries already.
    void append(Contribution contribution) {
        if (size_ < capacity) {
            entries_[size_++] = contribution;
        }
    }

    [[nodiscard]] std::size_t size() const { return size_; }
    [[nodiscard]] bool empty() const { return size_ == 0; }
    [[nodiscard]] const Contribution& operator[](std::size_t index) const { return entries_[index]; }
    [[nodiscard]] const Contribution* begin() const { return entries_.data(); }
    [[nodiscard]] const Contribution* end() const { return begin() + size_; }

private:
    std::array<Contribution, capacity> entries_{};
    std::size_t size_ = 0;
};

/// The latest scores of the sound classifier. All are 0 before its first result and after a stop.
struct SoundClassification {
    float music = 0;
    float speech = 0;
    float jingle = 0;  ///< a jingle or another sound typical of advertising
};

/// Spectral features of one hop.
struct FrameFeatures {
    float db = 0;  ///< root mean square level of the whole hop, dB relative to full scale
    Bands bands{};
};

/// The evidence of one hop, input of the scorer. On a silent hop, all fields except the last two are 0 or
/// false.
struct DetectionSignals {
    float music = 0;
    float speech = 0;
    float jingle = 0;
    float boundary = 0;      ///< strength of a change in the character of the sound
    float repetition = 0;    ///< similarity of the recent hops to a learned ad
    float loudnessRise = 0;  ///< dB above the running average level, may be negative; 0 without an average
    float keyword = 0;       ///< advertising phrases in recent transcripts
    bool keywordActive = false;  ///< transcription is enabled and available, so `keyword` is meaningful
    /// Seconds since the last ad ended; empty until a first ad has ended.
    std::optional<double> sinceLastAd = std::nullopt;
    bool silent = false;
};

/// The scorer's result for one hop.
struct AdVerdict {
    float raw = 0;         ///< this hop's combined evidence; 0 on a silent hop
    float confidence = 0;  ///< `raw` smoothed over time
    Contributions contributions;
};

/// Summary of an ad that has ended.
struct AdSummary {
    float peakConfidence = 0;
    /// Names of the strongest signals at the peak, strongest first; at most three, possibly none.
    std::vector<std::string> reasons;
};

/// Report on one hop for the user interface.
struct PipelineTick {
    float confidence = 0;
    float threshold = 0;
    bool inAd = false;  ///< after this hop
    bool silent = false;
    float music = 0;   ///< 0 when silent
    float speech = 0;  ///< 0 when silent
    Contributions contributions;
    std::string transcript;  ///< current transcript, UTF-8; empty if there is none
    bool transcribing = false;
};

}  // namespace sordin
