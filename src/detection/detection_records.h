// SPDX-License-Identifier: MIT
// The plain values that travel through the detector. Confidences, strengths, scores and shares are 0 to 1,
// levels decibels, times seconds of the pipeline's clock.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sordin {

/// How many octave bands describe a hop.
inline constexpr std::size_t bandCount = 8;

/// Band energies in dB (10 log10), lowest band first.
using Bands = std::array<float, bandCount>;

/// One named share of the ad evidence.
struct Contribution {
    std::string_view
        name;         ///< one of the scorer's signal names, a constant that lives as long as the program
    float value = 0;  ///< the signal's weight times its strength
};

/// The shares of one hop in the order of the scorer's weights; empty on a silent hop. Holds up to `capacity`
/// entries in place, because one is made on every hop.
class Contributions {
public:
    static constexpr std::size_t capacity = 6;

    /// Adds an entry; past the capacity it is dropped.
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

/// The sound classifier's latest scores; all 0 before its first result and after a stop.
struct SoundClassification {
    float music = 0;
    float speech = 0;
    float jingle = 0;  ///< a jingle or another sound typical of advertising
};

/// What one hop sounds like.
struct FrameFeatures {
    float db = 0;  ///< level of the whole hop, dB full scale
    Bands bands{};
};

/// The evidence of one hop, input of the scorer. A silent hop carries zeros and false, but for the last two.
struct DetectionSignals {
    float music = 0;
    float speech = 0;
    float jingle = 0;
    float boundary = 0;          ///< how much the sound changed its character
    float repetition = 0;        ///< likeness of the recent sound to a learned ad
    float loudnessRise = 0;      ///< dB above the running average level, any sign; 0 without an average
    float keyword = 0;           ///< advertising phrases in recent transcripts
    bool keywordActive = false;  ///< transcription is on and usable, so `keyword` means something
    std::optional<double> sinceLastAd =
        std::nullopt;  ///< seconds since the last ad ended; none before the first end
    bool silent = false;
};

/// The scorer's answer for one hop.
struct AdVerdict {
    float raw = 0;         ///< this hop's combined evidence; 0 on a silent hop
    float confidence = 0;  ///< smoothed over time
    Contributions contributions;
};

/// What is known of an ad when it ends.
struct AdSummary {
    float peakConfidence = 0;
    std::vector<std::string>
        reasons;  ///< signal names at the moment of the peak, strongest first, at most three
};

/// The report on one hop for whoever shows it.
struct PipelineTick {
    float confidence = 0;
    float threshold = 0;
    bool inAd = false;  ///< after this hop
    bool silent = false;
    float music = 0;   ///< 0 when silent
    float speech = 0;  ///< 0 when silent
    Contributions contributions;
    std::string transcript;  ///< the transcriber's text so far, UTF-8; empty when there is none
    bool transcribing = false;
};

}  // namespace sordin
