// SPDX-License-Identifier: MIT
#pragma once

#include "detection/detection_records.h"
#include "detection/detector_rules.h"

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace sordin {

/// Turns the confidence of each hop into ads, with hysteresis: it takes two or three hops at or above the
/// threshold to enter an ad, and a hold time clearly below it, or an implausible length, to leave.
class AdSegmenter {
public:
    struct Started {};
    struct Ended {
        AdSummary summary;
    };
    using Event = std::variant<Started, Ended>;

    /// From the next step on; an ad in progress goes on under the new rules.
    void setRules(const DetectorRules& rules) { rules_ = rules; }

    /// One step, for `hop` seconds of audio. Returns what happened on it, if anything. A threshold or a
    /// confidence that is not a number counts as too low.
    [[nodiscard]] std::optional<Event> update(float confidence, float threshold, double hop,
                                              const Contributions& contributions);

    /// Leaves the ad at once, whatever the confidence. Call only while inAd().
    [[nodiscard]] AdSummary forceEnd();

    [[nodiscard]] bool inAd() const { return inAd_; }

    /// Length in seconds of the current or the last ad, as far as its hops were seen.
    [[nodiscard]] double elapsed() const { return elapsed_; }

private:
    [[nodiscard]] std::optional<Event> updateOutside(float confidence, float threshold,
                                                     const Contributions& contributions);
    [[nodiscard]] std::optional<Event> updateInside(float confidence, float threshold, double hop,
                                                    const Contributions& contributions);
    void setPeak(float confidence, const Contributions& contributions);
    /// Names of the strongest shares above 0.15, at most three, strongest first.
    [[nodiscard]] static std::vector<std::string> reasons(const Contributions& contributions);

    static constexpr double maxAdSeconds = 240;  // longest ad: the volume must come back

    DetectorRules rules_;
    bool inAd_ = false;
    std::int64_t above_ = 0;  // consecutive hops at or above the threshold while outside
    double belowTime_ = 0;    // seconds of low confidence so far while inside
    double elapsed_ = 0;
    float peak_ = 0;
    Contributions peakContributions_;  // those at the peak; the reasons are made of them when the ad ends
};

}  // namespace sordin
