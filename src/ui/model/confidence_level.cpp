// SPDX-License-Identifier: MIT
#include "ui/model/confidence_level.h"

#include <QEasingCurve>
#include <QPainter>
#include <QQuickWindow>
#include <algorithm>
#include <cmath>

namespace sordin {

namespace {

constexpr int frame = 42;  // milliseconds; a film's frame rate is smooth enough for a small bar

}  // namespace

ConfidenceLevel::ConfidenceLevel(QQuickItem* parent) : QQuickPaintedItem(parent) {
    frames_.setInterval(frame);
    connect(&frames_, &QTimer::timeout, this, &ConfidenceLevel::move);
    for (const auto signal : {&ConfidenceLevel::overChanged, &ConfidenceLevel::thresholdChanged,
                              &ConfidenceLevel::styleChanged}) {
        connect(this, signal, this, [this] { update(); });
    }
}

void ConfidenceLevel::setConfidence(double confidence) {
    if (confidence == confidence_) {
        return;
    }
    confidence_ = confidence;
    const bool seen = isVisible() && window() != nullptr && window()->isExposed();
    const bool far = std::abs(lengthOf(confidence) - lengthOf(shown_)) >= 1;
    if (seen && far && duration_ > 0) {
        from_ = shown_;
        moving_.start();
        frames_.start();
    } else {
        frames_.stop();
        shown_ = confidence;
        update();
    }
    Q_EMIT confidenceChanged();
}

void ConfidenceLevel::move() {
    const double share = static_cast<double>(moving_.elapsed()) / std::max(duration_, 1);
    if (share >= 1) {
        frames_.stop();
        shown_ = confidence_;
    } else {
        shown_ = from_ + (confidence_ - from_) * QEasingCurve(QEasingCurve::OutQuad).valueForProgress(share);
    }
    update();
}

double ConfidenceLevel::lengthOf(double confidence) const {
    constexpr double shortest = 4;
    return std::max(width() * std::min(confidence, 1.0), shortest);
}

void ConfidenceLevel::paint(QPainter* painter) {
    constexpr double tickWidth = 2;
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(Qt::NoPen);
    const auto capsule = [&](double length, const QColor& colour) {
        const double radius = std::min(height(), length) / 2;
        painter->setBrush(colour);
        painter->drawRoundedRect(QRectF(0, 0, length, height()), radius, radius);
    };
    capsule(width(), track_);
    capsule(lengthOf(shown_), over_ ? reached_ : level_);
    painter->fillRect(QRectF(width() * threshold_ - tickWidth / 2, 0, tickWidth, height()), tick_);
}

}  // namespace sordin
