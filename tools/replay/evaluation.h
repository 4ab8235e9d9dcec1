// SPDX-License-Identifier: MIT
#pragma once

#include "replay/labels.h"

#include <optional>
#include <vector>

namespace sordin::replay {

/// The middle and the slow end of a set of delays, in seconds.
struct Delays {
    double median = 0;
    double percentile90 = 0;  ///< linear between the neighbouring values
};

/// How well the ads found match the real ones. A figure without anything to measure is absent.
struct Evaluation {
    std::optional<double> precision;       ///< share of the found seconds that are ads, 0 to 1
    std::optional<double> recall;          ///< share of the ads' seconds that were found
    std::optional<double> eventPrecision;  ///< share of the found ads that match a real one
    std::optional<double> eventRecall;     ///< share of the real ads that were matched
    std::optional<double> f05;             ///< of the two before, precision counting double
    std::optional<Delays> reaction;  ///< from the start of an ad to its first found second, ads found at all
    std::optional<Delays> lateRelease;   ///< how long after the end of an ad the same stretch went on
    std::optional<double> falsePerHour;  ///< seconds found per hour of programme (all that is no ad)
};

/// Compares. `found` and `truth` are each in the order of time and do not overlap among themselves;
/// `duration` is the length of the recording in seconds, and what of the truth lies beyond it does not count.
/// A found ad matches a real one if they share at least half of their union; each matches at most once, the
/// best pairs first.
[[nodiscard]] Evaluation evaluate(const std::vector<Interval>& found, std::vector<Interval> truth,
                                  double duration);

}  // namespace sordin::replay
