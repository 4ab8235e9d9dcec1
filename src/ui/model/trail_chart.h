// SPDX-License-Identifier: MIT
#pragma once

#include "ui/model/followed_engine.h"

#include <QColor>
#include <QFont>
#include <QPointF>
#include <QQuickPaintedItem>
#include <QVariantMap>

namespace sordin {

/// The confidence of the last minutes as a line over time, with the threshold as a dashed line. The vertical
/// axis is always 0 to 1; the horizontal axis spans the trail.
class TrailChart : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(sordin::SordinEngine* engine READ engine WRITE setEngine NOTIFY engineChanged REQUIRED)
    Q_PROPERTY(QColor line MEMBER line_ NOTIFY styleChanged)
    Q_PROPERTY(QColor rule MEMBER rule_ NOTIFY styleChanged)
    Q_PROPERTY(QColor grid MEMBER grid_ NOTIFY styleChanged)
    Q_PROPERTY(QColor label MEMBER label_ NOTIFY styleChanged)
    Q_PROPERTY(QFont font MEMBER font_ NOTIFY styleChanged)
    /// The row of the point under the pointer; -1 for none.
    Q_PROPERTY(int highlighted MEMBER highlighted_ NOTIFY styleChanged)

public:
    explicit TrailChart(QQuickItem* parent = nullptr);

    [[nodiscard]] SordinEngine* engine() const { return engine_.get(); }
    void setEngine(SordinEngine* engine);

    void paint(QPainter* painter) override;

    /// Returns the row of the point nearest to `x`; -1 if there is none.
    Q_INVOKABLE [[nodiscard]] int rowAt(double x) const;
    /// Returns "x" and "y" (item coordinates), "confidence" and "time" (text); empty if the row does not
    /// exist.
    Q_INVOKABLE [[nodiscard]] QVariantMap point(int row) const;

Q_SIGNALS:
    void engineChanged();
    void styleChanged();

private:
    [[nodiscard]] QRectF plot() const;
    [[nodiscard]] QPointF place(const TrailPoint& point) const;
    [[nodiscard]] double heightOf(double value) const;
    void paintAxes(QPainter& painter) const;
    void paintLine(QPainter& painter) const;

    FollowedEngine engine_;
    QColor line_;
    QColor rule_;
    QColor grid_;
    QColor label_;
    QFont font_;
    int highlighted_ = -1;
};

}  // namespace sordin
