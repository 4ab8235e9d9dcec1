// SPDX-License-Identifier: MIT
#include "ui/model/trail_chart.h"

#include "engine/reference_date.h"
#include "ui/model/date_text.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <cmath>

namespace sordin {

TrailChart::TrailChart(QQuickItem* parent) : QQuickPaintedItem(parent) {
    connect(this, &TrailChart::styleChanged, this, [this] { update(); });
}

void TrailChart::setEngine(SordinEngine* engine) {
    if (!engine_.change(engine, this)) {
        return;
    }
    if (engine_) {
        connect(engine_.get(), &SordinEngine::trailChanged, this, [this] { update(); });
        connect(engine_.get(), &SordinEngine::thresholdChanged, this, [this] { update(); });
    }
    Q_EMIT engineChanged();
    update();
}

QRectF TrailChart::plot() const {
    const QFontMetricsF metrics(font_);
    const double left = metrics.horizontalAdvance(QStringLiteral("0.5")) + 8;
    const double top = metrics.height() / 2;
    return {left, top, width() - left - 1, height() - top - metrics.height() - 4};
}

double TrailChart::heightOf(double value) const {
    const QRectF area = plot();
    return area.bottom() - std::clamp(value, 0.0, 1.0) * area.height();
}

QPointF TrailChart::place(const TrailPoint& point) const {
    const QRectF area = plot();
    const double first = engine_->trail().front().time;
    const double span = engine_->trail().back().time - first;
    // With a single point, or after the clock was set back, the newest point is at the right edge.
    const double share = span > 0 ? std::clamp((point.time - first) / span, 0.0, 1.0) : 1;
    return {area.left() + share * area.width(), heightOf(point.confidence)};
}

void TrailChart::paint(QPainter* painter) {
    painter->setFont(font_);
    paintAxes(*painter);
    painter->setRenderHint(QPainter::Antialiasing);
    if (engine_) {
        paintLine(*painter);
        QPen dashes(rule_, 1);
        dashes.setDashPattern({5, 4});
        painter->setPen(dashes);
        const double y = std::round(heightOf(engine_->threshold())) + 0.5;
        painter->drawLine(QPointF(plot().left(), y), QPointF(plot().right(), y));
    }
}

void TrailChart::paintAxes(QPainter& painter) const {
    constexpr int lines = 4;
    const QRectF area = plot();
    const double lineHeight = QFontMetricsF(font_).height();
    for (int i = 0; i <= lines; ++i) {
        const double value = static_cast<double>(i) / lines;
        const double y = std::round(heightOf(value));
        painter.fillRect(QRectF(area.left(), y, area.width(), 1), grid_);  // faster than drawLine()
        if (i % 2 == 0) {
            painter.setPen(label_);
            painter.drawText(QRectF(0, y + 0.5 - lineHeight / 2, area.left() - 8, lineHeight),
                             Qt::AlignRight | Qt::AlignVCenter, QString::number(value));
        }
    }
    painter.setPen(label_);
    const QRectF below(area.left(), height() - lineHeight, area.width(), lineHeight);
    painter.drawText(below, Qt::AlignHCenter, tr("Time"));
    if (engine_ && !engine_->trail().empty()) {
        const auto text = [](const TrailPoint& point) { return timeText(localDateTime(point.time).time()); };
        painter.drawText(below, Qt::AlignLeft | Qt::AlignAbsolute, text(engine_->trail().front()));
        painter.drawText(below, Qt::AlignRight | Qt::AlignAbsolute, text(engine_->trail().back()));
    }
}

void TrailChart::paintLine(QPainter& painter) const {
    const auto& trail = engine_->trail();
    if (trail.empty()) {
        return;
    }
    QPainterPath line(place(trail.front()));
    std::for_each(trail.begin() + 1, trail.end(),
                  [&](const TrailPoint& point) { line.lineTo(place(point)); });
    const QRectF area = plot();
    QPainterPath under = line;
    under.lineTo(line.currentPosition().x(), area.bottom());
    under.lineTo(place(trail.front()).x(), area.bottom());
    QLinearGradient shade(0, area.top(), 0, area.bottom());
    const auto faint = [this](float alpha) {
        QColor colour = line_;
        colour.setAlphaF(alpha);
        return colour;
    };
    shade.setColorAt(0, faint(0.22F));
    shade.setColorAt(1, faint(0.02F));
    painter.fillPath(under, shade);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(line_, 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPath(line);
    if (highlighted_ >= 0 && highlighted_ < static_cast<int>(trail.size())) {
        painter.setBrush(line_);
        painter.drawEllipse(place(trail[static_cast<std::size_t>(highlighted_)]), 3, 3);
    }
}

int TrailChart::rowAt(double x) const {
    if (!engine_ || engine_->trail().empty()) {
        return -1;
    }
    const auto& trail = engine_->trail();
    const auto nearest =
        std::min_element(trail.begin(), trail.end(), [&](const TrailPoint& a, const TrailPoint& b) {
            return std::abs(place(a).x() - x) < std::abs(place(b).x() - x);
        });
    return static_cast<int>(nearest - trail.begin());
}

QVariantMap TrailChart::point(int row) const {
    if (!engine_ || row < 0 || row >= static_cast<int>(engine_->trail().size())) {
        return {};
    }
    const TrailPoint& point = engine_->trail()[static_cast<std::size_t>(row)];
    const QPointF at = place(point);
    return {{QStringLiteral("x"), at.x()},
            {QStringLiteral("y"), at.y()},
            {QStringLiteral("confidence"), point.confidence},
            {QStringLiteral("time"), timeText(localDateTime(point.time).time())}};
}

}  // namespace sordin
