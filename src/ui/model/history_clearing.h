// SPDX-License-Identifier: MIT
#pragma once

#include "ui/model/followed_engine.h"

#include <QQmlEngine>
#include <QTimer>
#include <chrono>

namespace sordin {

/// Clears the ad history and can undo that for a while, even if pages change or new ads arrive. Main thread
/// only.
class HistoryClearing : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(sordin::SordinEngine* engine READ engine WRITE setEngine NOTIFY engineChanged REQUIRED)
    /// Whether the history contains any event.
    Q_PROPERTY(bool canClear READ canClear NOTIFY canClearChanged)
    Q_PROPERTY(bool canUndo READ canUndo NOTIFY canUndoChanged)

public:
    /// How long clear() can be undone.
    static constexpr std::chrono::seconds undoTime{20};

    explicit HistoryClearing(QObject* parent = nullptr);

    [[nodiscard]] SordinEngine* engine() const { return engine_.get(); }
    void setEngine(SordinEngine* engine);
    [[nodiscard]] bool canClear() const { return engine_ && !engine_->history().empty(); }
    [[nodiscard]] bool canUndo() const { return !cleared_.empty(); }

    /// Clears the history at once, also on the disk.
    Q_INVOKABLE void clear();
    /// Restores the events of the last clear() after those added since. Does nothing if canUndo() is false.
    Q_INVOKABLE void undo();

Q_SIGNALS:
    void engineChanged();
    void canClearChanged();
    void canUndoChanged();

private:
    void forget();

    FollowedEngine engine_;
    AdHistory cleared_;
    QTimer undoTimer_;
};

}  // namespace sordin
