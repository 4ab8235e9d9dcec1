// SPDX-License-Identifier: MIT
#include "ui/model/timeline_strip.h"

#include "engine/reference_date.h"

#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <chrono>
#include <cmath>

namespace sordin {

namespace {

constexpr double groundRadius = 6;
constexpr double markRadius = 2;
constexpr double narrowestMark = 3;
constexpr double tolerance = 3;  // around a mark, in points

}  // namespace

TimelineStrip::TimelineStrip(QQuickItem* parent) : QQuickPaintedItem(parent) {
    connect(this, &TimelineStrip::changed, this, [this] { update(); });
    connect(&repaint_, &QTimer::timeout, this, [this] { update(); });
    repaint_.start(std::chrono::minutes(1));
}

void TimelineStrip::setEvents(AdHistoryModel* events) {
    if (events == events_) {
        return;
    }
    if (events_) {
        events_->disconnect(this);
    }
    events_ = events;
    if (events_) {
        connect(events_, &AdHistoryModel::eventsChanged, this, [this] { update(); });
    }
    Q_EMIT eventsChanged();
    update();
}

std::vector<TimelineStrip::Mark> TimelineStrip::marks(const QDateTime& now) const {
    std::vector<Mark> marks;
    if (!events_) {
        return marks;
    }
    const double span = hours_ * 3600.0;
    const AdHistory& events = events_->events();
    for (std::size_t row = 0; row < events.size(); ++row) {
        const AdEvent& event = events[row];
        const double age = static_cast<double>(localDateTime(event.start).msecsTo(now)) / 1000;
        if (age - event.duration > span) {
            continue;  // ended before the bar begins
        }
        const double left = std::max((1 - age / span) * width(), 0.0);
        const double length = std::max(event.duration / span * width(), narrowestMark);
        marks.push_back(
            {static_cast<int>(row), {left, 0, length, height()}, event.kind == AdEvent::Kind::muted});
    }
    return marks;
}

void TimelineStrip::paint(QPainter* painter) {
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(Qt::NoPen);
    QPainterPath ground;
    ground.addRoundedRect(QRectF(0, 0, width(), height()), groundRadius, groundRadius);
    painter->fillPath(ground, ground_);
    painter->setClipPath(ground);
    painted_ = QDateTime::currentDateTime();
    for (const Mark& mark : marks(painted_)) {
        painter->setBrush(mark.real ? real_ : test_);
        painter->drawRoundedRect(mark.place, markRadius, markRadius);
    }
}

int TimelineStrip::rowAt(double x) const {
    const auto all = marks(painted_.isValid() ? painted_ : QDateTime::currentDateTime());
    const auto found = std::find_if(all.rbegin(), all.rend(), [x](const Mark& mark) {
        return x >= mark.place.left() - tolerance && x <= mark.place.right() + tolerance;
    });
    return found == all.rend() ? -1 : found->row;
}

}  // namespace sordin
