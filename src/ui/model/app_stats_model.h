// SPDX-License-Identifier: MIT
#pragma once

#include "ui/model/followed_engine.h"

#include <QAbstractListModel>
#include <QQmlEngine>

namespace sordin {

/// What came from each application, the one with the longest time first, and then the applications that are
/// not listened to and had no ads. Changes with the history and with these; what is said relative to now is
/// as of then.
class AppStatsModel : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(sordin::SordinEngine* engine READ engine WRITE setEngine NOTIFY engineChanged REQUIRED)
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    enum Role {
        appRole = Qt::UserRole,
        summaryRole,  ///< how many and how long
        shareRole,    ///< of the time of the first application, 0 to 1
        detailsRole,  ///< average and last
        ignoredRole,  ///< whether it is not listened to
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
    std::vector<AppStat> stats_;  // those without ads have a count of 0
};

}  // namespace sordin
