// SPDX-License-Identifier: MIT
#include "ui/model/history_clearing.h"

namespace sordin {

HistoryClearing::HistoryClearing(QObject* parent) : QObject(parent) {
    undoTimer_.setSingleShot(true);
    undoTimer_.setInterval(undoTime);
    connect(&undoTimer_, &QTimer::timeout, this, &HistoryClearing::forget);
}

void HistoryClearing::setEngine(SordinEngine* engine) {
    if (!engine_.change(engine, this)) {
        return;
    }
    if (engine_) {
        connect(engine_.get(), &SordinEngine::historyChanged, this, &HistoryClearing::canClearChanged);
    }
    forget();
    Q_EMIT engineChanged();
    Q_EMIT canClearChanged();
}

void HistoryClearing::clear() {
    if (!canClear()) {
        return;
    }
    cleared_ = engine_->history();
    undoTimer_.start();
    engine_->setHistory({});
    engine_->saveHistory();
    Q_EMIT canUndoChanged();
}

void HistoryClearing::undo() {
    if (!canUndo() || !engine_) {
        return;
    }
    AdHistory history = engine_->history();
    history.insert(history.end(), cleared_.begin(), cleared_.end());
    engine_->setHistory(std::move(history));
    engine_->saveHistory();
    forget();
}

void HistoryClearing::forget() {
    undoTimer_.stop();
    if (canUndo()) {
        cleared_.clear();
        Q_EMIT canUndoChanged();
    }
}

}  // namespace sordin
