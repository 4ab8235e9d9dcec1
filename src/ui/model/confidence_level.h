// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>
#include <QElapsedTimer>
#include <QQuickPaintedItem>
#include <QTimer>

namespace sordin {

/// A bar for the current ad confidence and the threshold, both 0 to 1: a track, a level from the left, which
/// changes its color at the threshold, and a tick.
class ConfidenceLevel : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    /// The target length of the level. Values above 1 fill the track; 0 and below show a stub.
    Q_PROPERTY(double confidence READ confidence WRITE setConfidence NOTIFY confidenceChanged)
    /// The duration of a change in milliseconds; without animation while the bar is not visible.
    Q_PROPERTY(int duration MEMBER duration_ NOTIFY durationChanged)
    /// Whether the level has the color `reached` instead of `level`.
    Q_PROPERTY(bool over MEMBER over_ NOTIFY overChanged)
    /// The position of the tick; not clamped.
    Q_PROPERTY(double threshold MEMBER threshold_ NOTIFY thresholdChanged)
    Q_PROPERTY(QColor track MEMBER track_ NOTIFY styleChanged)
    Q_PROPERTY(QColor level MEMBER level_ NOTIFY styleChanged)
    Q_PROPERTY(QColor reached MEMBER reached_ NOTIFY styleChanged)
    Q_PROPERTY(QColor tick MEMBER tick_ NOTIFY styleChanged)

public:
    explicit ConfidenceLevel(QQuickItem* parent = nullptr);
    void paint(QPainter* painter) override;

    [[nodiscard]] double confidence() const { return confidence_; }
    void setConfidence(double confidence);

Q_SIGNALS:
    void confidenceChanged();
    void durationChanged();
    void overChanged();
    void thresholdChanged();
    void styleChanged();

private:
    [[nodiscard]] double lengthOf(double confidence) const;
    void move();

    double confidence_ = 0;
    double from_ = 0;   // start of the animation
    double shown_ = 0;  // current value of the animation
    int duration_ = 0;
    QTimer frames_;
    QElapsedTimer moving_;
    bool over_ = false;
    double threshold_ = 0;
    QColor track_;
    QColor level_;
    QColor reached_;
    QColor tick_;
};

}  // namespace sordin
