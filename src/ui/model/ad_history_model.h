// SPDX-License-Identifier: MIT
#pragma once

#include "ui/model/followed_engine.h"

#include <QAbstractListModel>
#include <QQmlEngine>

namespace sordin {

/// The ads of the history as a list, newest first.
class AdHistoryModel : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(sordin::SordinEngine* engine READ engine WRITE setEngine NOTIFY engineChanged REQUIRED)
    Q_PROPERTY(bool showTests READ showTests WRITE setShowTests NOTIFY showTestsChanged)
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    enum Role {
        appRole = Qt::UserRole,
        realRole,        ///< bool: a muted ad, neither a test nor a simulation
        startRole,       ///< QDateTime
        detailsRole,     ///< start and reasons
        durationRole,    ///< text
        confidenceRole,  ///< whole percent, truncated
        summaryRole,     ///< everything in one text
    };

    using QAbstractListModel::QAbstractListModel;

    [[nodiscard]] SordinEngine* engine() const { return engine_.get(); }
    void setEngine(SordinEngine* engine);

    /// Whether ads of test mode and simulations are included. Initially true.
    [[nodiscard]] bool showTests() const { return showTests_; }
    void setShowTests(bool show);

    [[nodiscard]] int count() const { return static_cast<int>(shown_.size()); }

    /// The listed events, newest first.
    [[nodiscard]] const AdHistory& events() const { return shown_; }

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    /// Returns summaryRole of a row; empty if the row does not exist.
    Q_INVOKABLE [[nodiscard]] QString summary(int row) const;

Q_SIGNALS:
    void engineChanged();
    void showTestsChanged();
    void countChanged();
    /// The list of events changed.
    void eventsChanged();

private:
    [[nodiscard]] AdHistory wanted() const;
    void follow();

    FollowedEngine engine_;
    bool showTests_ = true;
    AdHistory shown_;
};

}  // namespace sordin
