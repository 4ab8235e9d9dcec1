// SPDX-License-Identifier: MIT
#pragma once

#include "ui/model/followed_engine.h"

#include <QObject>
#include <QQmlEngine>
#include <QTimer>

namespace sordin {

/// Figures of the ad history as texts. They update with the history and at midnight.
class SummaryTexts : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(sordin::SordinEngine* engine READ engine WRITE setEngine NOTIFY engineChanged REQUIRED)
    /// One line with the number and the duration of today's ads.
    Q_PROPERTY(QString today READ today NOTIFY changed)
    Q_PROPERTY(QString adsToday READ adsToday NOTIFY changed)
    Q_PROPERTY(QString mutedToday READ mutedToday NOTIFY changed)
    Q_PROPERTY(QString allTimeMuted READ allTimeMuted NOTIFY changed)

public:
    explicit SummaryTexts(QObject* parent = nullptr);

    [[nodiscard]] SordinEngine* engine() const { return engine_.get(); }
    void setEngine(SordinEngine* engine);

    [[nodiscard]] QString today() const;
    [[nodiscard]] QString adsToday() const;
    [[nodiscard]] QString mutedToday() const;
    [[nodiscard]] QString allTimeMuted() const;

Q_SIGNALS:
    void engineChanged();
    void changed();

private:
    [[nodiscard]] TodaySummary summary() const { return engine_ ? engine_->todaySummary() : TodaySummary(); }
    void waitForMidnight();

    FollowedEngine engine_;
    QTimer midnight_;
};

}  // namespace sordin
