// SPDX-License-Identifier: MIT
#pragma once

#include "replay/labels.h"

#include <optional>
#include <vector>

namespace sordin::replay {

/// Median and 90th percentile of a set of delays in seconds.
struct Delays {
    double median = 0;
    double percentile90 = 0;  ///< interpolated linearly
};

/// How well the found intervals match the real ones, interval by interval. Figures without data are absent.
struct EventFigures {
    std::optional<double> precision;    ///< share of the found intervals that match a real one, 0 to 1
    std::optional<double> recall;       ///< share of the real intervals that were matched, 0 to 1
    std::optional<double> f05;          ///< F-score of both that weights precision twice as much as recall
    std::optional<Delays> reaction;     ///< from the start of a real interval to its first found second
    std::optional<Delays> lateRelease;  ///< from the end of a real interval to the end of the same found one
};

/// How well the found ads match the real ones. Figures without data are absent.
struct Evaluation {
    std::optional<double> precision;     ///< share of the found seconds that are ads, 0 to 1
    std::optional<double> recall;        ///< share of the ads' seconds that were found, 0 to 1
    std::optional<double> falsePerHour;  ///< seconds found outside ads, per hour outside ads
    EventFigures breaks;  ///< relative to commercial breaks: ads less than breakGap apart, joined
    EventFigures ads;     ///< relative to single ads
};

/// Ads with a shorter gap than this, in seconds, are one break. The detector cannot distinguish the ads of a
/// break, and the volume should stay down between them.
inline constexpr double breakGap = 3;

/// Compares found with real ads. `found` and `truth` are each in chronological order and without overlaps;
/// `duration` is the length of the recording in seconds, and `truth` beyond it is ignored. A found interval
/// matches a real one if they share at least half of their union. Each interval matches at most once, the
/// best pairs first.
[[nodiscard]] Evaluation evaluate(const std::vector<Interval>& found, std::vector<Interval> truth,
                                  double duration);

}  // namespace sordin::replay
