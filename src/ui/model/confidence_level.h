// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>
#include <QQuickPaintedItem>

namespace sordin {

/// The current ad confidence and the threshold, both 0 to 1: a track, a level from the left, which changes
/// its colour at the threshold, and a tick. It does not move by itself.
class ConfidenceLevel : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    /// The length of the level. Above 1 the track is full; a stub is there at 0 and below.
    Q_PROPERTY(double shown MEMBER shown_ NOTIFY shownChanged)
    /// The level has `reached` for its colour, otherwise `level`.
    Q_PROPERTY(bool over MEMBER over_ NOTIFY overChanged)
    /// Where the tick is; not clamped.
    Q_PROPERTY(double threshold MEMBER threshold_ NOTIFY thresholdChanged)
    Q_PROPERTY(QColor track MEMBER track_ NOTIFY styleChanged)
    Q_PROPERTY(QColor level MEMBER level_ NOTIFY styleChanged)
    Q_PROPERTY(QColor reached MEMBER reached_ NOTIFY styleChanged)
    Q_PROPERTY(QColor tick MEMBER tick_ NOTIFY styleChanged)

public:
    explicit ConfidenceLevel(QQuickItem* parent = nullptr);
    void paint(QPainter* painter) override;

Q_SIGNALS:
    void shownChanged();
    void overChanged();
    void thresholdChanged();
    void styleChanged();

private:
    double shown_ = 0;
    bool over_ = false;
    double threshold_ = 0;
    QColor track_;
    QColor level_;
    QColor reached_;
    QColor tick_;
};

}  // namespace sordin
