// SPDX-License-Identifier: MIT
#include "ui/model/confidence_level.h"

#include <QPainter>
#include <algorithm>

namespace sordin {

ConfidenceLevel::ConfidenceLevel(QQuickItem* parent) : QQuickPaintedItem(parent) {
    for (const auto signal : {&ConfidenceLevel::shownChanged, &ConfidenceLevel::overChanged,
                              &ConfidenceLevel::thresholdChanged, &ConfidenceLevel::styleChanged}) {
        connect(this, signal, this, [this] { update(); });
    }
}

void ConfidenceLevel::paint(QPainter* painter) {
    constexpr double shortest = 4;
    constexpr double tickWidth = 2;
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(Qt::NoPen);
    const auto capsule = [&](double length, const QColor& colour) {
        const double radius = std::min(height(), length) / 2;
        painter->setBrush(colour);
        painter->drawRoundedRect(QRectF(0, 0, length, height()), radius, radius);
    };
    capsule(width(), track_);
    capsule(std::max(width() * std::min(shown_, 1.0), shortest), over_ ? reached_ : level_);
    painter->fillRect(QRectF(width() * threshold_ - tickWidth / 2, 0, tickWidth, height()), tick_);
}

}  // namespace sordin
