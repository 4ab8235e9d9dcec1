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

/// How well the found stretches match real ones, one by one. A figure without anything to measure is absent.
struct EventFigures {
    std::optional<double> precision;    ///< share of the found stretches that match a real one, 0 to 1
    std::optional<double> recall;       ///< share of the real ones that were matched, 0 to 1
    std::optional<double> f05;          ///< of the two, precision counting double
    std::optional<Delays> reaction;     ///< from the start of a real one to its first found second, if any
    std::optional<Delays> lateRelease;  ///< how long after its end the same found stretch went on
};

/// How well the ads found match the real ones. A figure without anything to measure is absent.
struct Evaluation {
    std::optional<double> precision;     ///< share of the found seconds that are ads, 0 to 1
    std::optional<double> recall;        ///< share of the ads' seconds that were found, 0 to 1
    std::optional<double> falsePerHour;  ///< seconds found per hour of programme (all that is no ad)
    EventFigures breaks;                 ///< against commercial breaks: ads less than breakGap apart joined
    EventFigures ads;                    ///< against every ad by itself
};

/// Ads with a shorter gap than this between them are one break, seconds. The detector cannot see where one
/// ad of a break ends and the next begins, and the volume should stay down between them.
inline constexpr double breakGap = 3;

/// Compares. `found` and `truth` are each in the order of time and do not overlap among themselves;
/// `duration` is the length of the recording in seconds, and what of the truth lies beyond it does not count.
/// A found stretch matches a real one if they share at least half of their union; each matches at most once,
/// the best pairs first.
[[nodiscard]] Evaluation evaluate(const std::vector<Interval>& found, std::vector<Interval> truth,
                                  double duration);

}  // namespace sordin::replay
