// SPDX-License-Identifier: MIT
#pragma once

#include "ui/model/followed_engine.h"

#include <QAbstractListModel>
#include <QQmlEngine>
#include <QTimer>
#include <chrono>

namespace sordin {

/// The remembered ads as a list, newest first; also clears the history, and for a few seconds brings it back.
class AdHistoryModel : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(sordin::SordinEngine* engine READ engine WRITE setEngine NOTIFY engineChanged REQUIRED)
    Q_PROPERTY(bool showTests READ showTests WRITE setShowTests NOTIFY showTestsChanged)
    Q_PROPERTY(int count READ count NOTIFY countChanged)
    Q_PROPERTY(bool canClear READ canClear NOTIFY canClearChanged)
    Q_PROPERTY(bool canUndo READ canUndo NOTIFY canUndoChanged)

public:
    enum Role {
        appRole = Qt::UserRole,
        realRole,        ///< bool: faded, not watched or simulated
        startRole,       ///< QDateTime
        detailsRole,     ///< start and reasons
        durationRole,    ///< text
        confidenceRole,  ///< whole percents, truncated
    };

    /// How long a cleared history can be brought back.
    static constexpr std::chrono::seconds undoTime{8};

    explicit AdHistoryModel(QObject* parent = nullptr);

    [[nodiscard]] SordinEngine* engine() const { return engine_.get(); }
    void setEngine(SordinEngine* engine);

    /// Whether watched and simulated ads are listed too. On at first.
    [[nodiscard]] bool showTests() const { return showTests_; }
    void setShowTests(bool show);

    [[nodiscard]] int count() const { return static_cast<int>(shown_.size()); }
    /// Whether anything is remembered, listed or not.
    [[nodiscard]] bool canClear() const { return engine_ && !engine_->history().empty(); }
    /// Shortly after clear(), while nothing new has come.
    [[nodiscard]] bool canUndo() const { return canUndo_; }

    /// What is listed, newest first.
    [[nodiscard]] const AdHistory& events() const { return shown_; }

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    /// Forgets everything, listed or not, at once and on the disk.
    Q_INVOKABLE void clear();
    /// Brings back what clear() has forgotten, if canUndo.
    Q_INVOKABLE void undoClear();

Q_SIGNALS:
    void engineChanged();
    void showTestsChanged();
    void countChanged();
    void canClearChanged();
    void canUndoChanged();
    /// What is listed is another.
    void eventsChanged();

private:
    [[nodiscard]] AdHistory wanted() const;
    void historyChanged();
    void follow();
    void forgetCleared();

    FollowedEngine engine_;
    bool showTests_ = true;
    AdHistory shown_;
    AdHistory cleared_;  // while canUndo_
    bool canUndo_ = false;
    QTimer undoTimer_;
};

}  // namespace sordin
