// SPDX-License-Identifier: MIT
#pragma once

#include "ui/model/followed_engine.h"

#include <QObject>
#include <QQmlEngine>

namespace sordin {

/// The engine's state as text and color, for every place that shows it.
class StatusLabel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(sordin::SordinEngine* engine READ engine WRITE setEngine NOTIFY engineChanged REQUIRED)
    Q_PROPERTY(QString text READ text NOTIFY changed)
    Q_PROPERTY(QString callText READ callText NOTIFY changed)
    Q_PROPERTY(Tone tone READ tone NOTIFY changed)
    /// The capture could not start or ended by itself.
    Q_PROPERTY(bool failed READ failed NOTIFY changed)

public:
    /// The colors of the theme.
    enum class Tone { gray, orange, yellow, green, red };
    Q_ENUM(Tone)

    using QObject::QObject;

    [[nodiscard]] SordinEngine* engine() const { return engine_.get(); }
    void setEngine(SordinEngine* engine);

    /// A short line; for a failure, its message. Empty without an engine.
    [[nodiscard]] QString text() const;
    /// The reason for not listening during a call; empty if there is no call.
    [[nodiscard]] QString callText() const;
    [[nodiscard]] Tone tone() const;
    [[nodiscard]] bool failed() const {
        return engine_ && engine_->status().kind() == EngineStatus::Kind::failed;
    }

Q_SIGNALS:
    void engineChanged();
    void changed();

private:
    FollowedEngine engine_;
};

}  // namespace sordin
