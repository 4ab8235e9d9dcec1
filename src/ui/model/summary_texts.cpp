// SPDX-License-Identifier: MIT
#include "ui/model/summary_texts.h"

#include "engine/duration_text.h"

#include <QDateTime>
#include <algorithm>
#include <numeric>

namespace sordin {

SummaryTexts::SummaryTexts(QObject* parent) : QObject(parent) {
    midnight_.setSingleShot(true);
    connect(&midnight_, &QTimer::timeout, this, [this] {
        Q_EMIT changed();
        waitForMidnight();
    });
    waitForMidnight();
}

/// At most an hour: timers do not count time asleep, and the clock can be set.
void SummaryTexts::waitForMidnight() {
    using namespace std::chrono_literals;
    const QDateTime now = QDateTime::currentDateTime();
    const auto left = std::chrono::milliseconds(now.msecsTo(now.date().addDays(1).startOfDay()) + 1000);
    midnight_.start(std::min<std::chrono::milliseconds>(left, 1h));
}

void SummaryTexts::setEngine(SordinEngine* engine) {
    if (!engine_.change(engine, this)) {
        return;
    }
    if (engine_) {
        connect(engine_.get(), &SordinEngine::historyChanged, this, &SummaryTexts::changed);
    }
    Q_EMIT engineChanged();
    Q_EMIT changed();
}

QString SummaryTexts::today() const {
    const TodaySummary now = summary();
    return tr("Today: %1 ads · %2 muted").arg(now.count).arg(formatDuration(now.seconds));
}

QString SummaryTexts::adsToday() const {
    return QString::number(summary().count);
}

QString SummaryTexts::mutedToday() const {
    return formatDuration(summary().seconds);
}

QString SummaryTexts::allTimeMuted() const {
    const AdHistory events = engine_ ? engine_->realEvents() : AdHistory();
    return formatDuration(
        std::accumulate(events.begin(), events.end(), 0.0,
                        [](double sum, const AdEvent& event) { return sum + event.duration; }));
}

}  // namespace sordin
