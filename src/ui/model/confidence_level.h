// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>
#include <QElapsedTimer>
#include <QQuickPaintedItem>
#include <QTimer>

namespace sordin {

/// The current ad confidence and the threshold, both 0 to 1: a track, a level from the left, which changes
/// its colour at the threshold, and a tick.
class ConfidenceLevel : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    /// The length of the level, to which it moves. Above 1 the track is full; a stub is there at 0 and below.
    Q_PROPERTY(double confidence READ confidence WRITE setConfidence NOTIFY confidenceChanged)
    /// How long it moves to another length, in milliseconds; it jumps where nobody sees it.
    Q_PROPERTY(int duration MEMBER duration_ NOTIFY durationChanged)
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
    double from_ = 0;   // where the movement began
    double shown_ = 0;  // where it is
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
