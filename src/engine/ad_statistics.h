// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ad_event.h"

#include <vector>

namespace sordin {

/// The ads of one application.
struct AppStat {
    QString app;
    int count = 0;
    double total = 0;        ///< seconds
    ReferenceDate last = 0;  ///< start of the latest ad

    bool operator==(const AppStat&) const = default;
};

/// Number and total duration of one day's ads.
struct TodaySummary {
    int count = 0;
    double seconds = 0;

    bool operator==(const TodaySummary&) const = default;
};

/// The ads of kind `muted`, in the order of the history.
[[nodiscard]] AdHistory realEvents(const AdHistory& history);

/// Statistics by application of the ads of the kinds `muted` and `testOnly`, longest total duration first.
[[nodiscard]] std::vector<AppStat> appStats(const AdHistory& history);

/// Summary of the ads of kind `muted` that started on the day of `now`, in the user's time zone.
[[nodiscard]] TodaySummary todaySummary(const AdHistory& history, ReferenceDate now);

}  // namespace sordin
