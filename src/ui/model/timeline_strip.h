// SPDX-License-Identifier: MIT
#pragma once

#include "ui/model/ad_history_model.h"

#include <QColor>
#include <QDateTime>
#include <QPointer>
#include <QQuickPaintedItem>
#include <QTimer>
#include <vector>

namespace sordin {

/// The ads of the last hours as marks on a bar, whose right end is the present. Positions are those of the
/// last painting.
class TimelineStrip : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(sordin::AdHistoryModel* events READ events WRITE setEvents NOTIFY eventsChanged REQUIRED)
    /// The time span of the bar.
    Q_PROPERTY(int hours MEMBER hours_ NOTIFY changed REQUIRED)
    Q_PROPERTY(QColor ground MEMBER ground_ NOTIFY changed)
    Q_PROPERTY(QColor real MEMBER real_ NOTIFY changed)
    Q_PROPERTY(QColor test MEMBER test_ NOTIFY changed)

public:
    struct Mark {
        int row;       ///< row in the model
        QRectF place;  ///< in item coordinates
        bool real;
    };

    explicit TimelineStrip(QQuickItem* parent = nullptr);

    [[nodiscard]] AdHistoryModel* events() const { return events_; }
    void setEvents(AdHistoryModel* events);

    /// Returns the marks to draw at the time `now`; later ones cover earlier ones.
    [[nodiscard]] std::vector<Mark> marks(const QDateTime& now) const;
    void paint(QPainter* painter) override;

    /// Returns the row of the topmost mark at `x` in the last painting, with a tolerance of a few points; -1
    /// if there is none.
    Q_INVOKABLE [[nodiscard]] int rowAt(double x) const;

Q_SIGNALS:
    void eventsChanged();
    void changed();

private:
    QPointer<AdHistoryModel> events_;
    QDateTime painted_;
    QTimer repaint_;  // moves the marks as time passes
    int hours_ = 6;
    QColor ground_;
    QColor real_;
    QColor test_;
};

}  // namespace sordin
