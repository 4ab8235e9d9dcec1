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

/// Derives ads from the confidence of each hop, with hysteresis: an ad starts after a run of hops at or above
/// the threshold, and ends after a hold time clearly below the threshold or at the maximum length of 240 s.
class AdSegmenter {
public:
    struct Started {};
    struct Ended {
        AdSummary summary;
    };
    using Event = std::variant<Started, Ended>;

    /// Sets the rules from the next hop on, also for an ad in progress.
    void setRules(const DetectorRules& rules) { rules_ = rules; }

    /// Processes one hop of `hop` seconds. Returns an event if an ad starts or ends on it. A NaN threshold or
    /// confidence counts as too low.
    [[nodiscard]] std::optional<Event> update(float confidence, float threshold, double hop,
                                              const Contributions& contributions);

    /// Ends the ad immediately. Call only while inAd().
    [[nodiscard]] AdSummary forceEnd();

    [[nodiscard]] bool inAd() const { return inAd_; }

    /// Total length of the hops of the current or the last ad, seconds.
    [[nodiscard]] double elapsed() const { return elapsed_; }

private:
    [[nodiscard]] std::optional<Event> updateOutside(float confidence, float threshold,
                                                     const Contributions& contributions);
    [[nodiscard]] std::optional<Event> updateInside(float confidence, float threshold, double hop,
                                                    const Contributions& contributions);
    void setPeak(float confidence, const Contributions& contributions);
    /// Names of the signals with a share above 0.15, strongest first, at most three.
    [[nodiscard]] static std::vector<std::string> reasons(const Contributions& contributions);

    static constexpr double maxAdSeconds = 240;  // restores the volume even if the confidence stays high

    DetectorRules rules_;
    bool inAd_ = false;
    std::int64_t above_ = 0;  // consecutive hops at or above the threshold outside an ad
    double belowTime_ = 0;    // seconds of continuously low confidence inside an ad
    double elapsed_ = 0;
    float peak_ = 0;
    Contributions peakContributions_;  // contributions at the peak; source of the reasons
};

}  // namespace sordin
