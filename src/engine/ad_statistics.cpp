// SPDX-License-Identifier: MIT
#include "engine/ad_statistics.h"

#include <QHash>
#include <algorithm>
#include <iterator>

namespace sordin {

AdHistory realEvents(const AdHistory& history) {
    AdHistory real;
    std::copy_if(history.begin(), history.end(), std::back_inserter(real),
                 [](const AdEvent& event) { return event.kind == AdEvent::Kind::muted; });
    return real;
}

std::vector<AppStat> appStats(const AdHistory& history) {
    QHash<QString, AppStat> byApp;
    for (const AdEvent& event : history) {
        if (event.kind == AdEvent::Kind::simulated) {
            continue;
        }
        auto row = byApp.find(event.app);
        if (row == byApp.end()) {
            row = byApp.insert(event.app, {event.app, 0, 0, event.start});
        }
        ++row->count;
        row->total += event.duration;
        row->last = std::max(row->last, event.start);
    }
    std::vector<AppStat> rows(byApp.begin(), byApp.end());
    std::sort(rows.begin(), rows.end(), [](const AppStat& first, const AppStat& second) {
        // Equal totals are sorted by name, so that the order of the rows is stable.
        return first.total != second.total ? first.total > second.total : first.app < second.app;
    });
    return rows;
}

TodaySummary todaySummary(const AdHistory& history, ReferenceDate now) {
    const QDate today = localDateTime(now).date();
    TodaySummary summary;
    for (const AdEvent& event : history) {
        if (event.kind == AdEvent::Kind::muted && localDateTime(event.start).date() == today) {
            ++summary.count;
            summary.seconds += event.duration;
        }
    }
    return summary;
}

}  // namespace sordin
