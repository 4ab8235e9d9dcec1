// SPDX-License-Identifier: MIT
#pragma once

#include "ui/model/followed_engine.h"

#include <QAbstractListModel>
#include <QQmlEngine>

namespace sordin {

/// Statistics per application, the longest total time first, followed by ignored applications without ads.
/// Updates with the history and the ignored applications; relative dates refer to the last update.
class AppStatsModel : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(sordin::SordinEngine* engine READ engine WRITE setEngine NOTIFY engineChanged REQUIRED)
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    enum Role {
        appRole = Qt::UserRole,
        summaryRole,  ///< number and duration of the ads
        shareRole,    ///< relative to the first application's total, 0 to 1
        detailsRole,  ///< average and last ad
        ignoredRole,  ///< whether the application is excluded from listening
    };

    using QAbstractListModel::QAbstractListModel;

    [[nodiscard]] SordinEngine* engine() const { return engine_.get(); }
    void setEngine(SordinEngine* engine);
    [[nodiscard]] int count() const { return static_cast<int>(stats_.size()); }

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

Q_SIGNALS:
    void engineChanged();
    void countChanged();

private:
    void follow();

    FollowedEngine engine_;
    std::vector<AppStat> stats_;  // ignored applications without ads have a count of 0
};

}  // namespace sordin
