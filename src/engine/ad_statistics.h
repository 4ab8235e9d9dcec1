// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ad_event.h"

#include <vector>

namespace sordin {

/// All that came from one application.
struct AppStat {
    QString app;
    int count = 0;
    double total = 0;  ///< seconds
    ReferenceDate last = 0;

    bool operator==(const AppStat&) const = default;
};

struct TodaySummary {
    int count = 0;
    double seconds = 0;

    bool operator==(const TodaySummary&) const = default;
};

/// The ads that were really faded, in the order of the history.
[[nodiscard]] AdHistory realEvents(const AdHistory& history);

/// The real ads, faded or only watched, by application; the one with most seconds first.
[[nodiscard]] std::vector<AppStat> appStats(const AdHistory& history);

/// The ads really faded that began on the day of `now`, in the user's calendar.
[[nodiscard]] TodaySummary todaySummary(const AdHistory& history, ReferenceDate now);

}  // namespace sordin
