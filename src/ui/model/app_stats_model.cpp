// SPDX-License-Identifier: MIT
#include "ui/model/app_stats_model.h"

#include "engine/duration_text.h"
#include "ui/model/date_text.h"

#include <algorithm>
#include <utility>

namespace sordin {

void AppStatsModel::setEngine(SordinEngine* engine) {
    if (!engine_.change(engine, this)) {
        return;
    }
    if (engine_) {
        connect(engine_.get(), &SordinEngine::historyChanged, this, &AppStatsModel::follow);
        connect(engine_.get(), &SordinEngine::ignoredApplicationsChanged, this, &AppStatsModel::follow);
    }
    follow();
    Q_EMIT engineChanged();
}

int AppStatsModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : count();
}

QVariant AppStatsModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid)) {
        return {};
    }
    const AppStat& stat = stats_[static_cast<std::size_t>(index.row())];
    switch (role) {
    case Qt::DisplayRole:
    case appRole:
        return stat.app;
    case ignoredRole:
        return engine_ && engine_->ignoredNames().contains(stat.app);
    case summaryRole:
        return stat.count == 0 ? QString()
                               : tr("%1 ads · %2 muted").arg(stat.count).arg(formatDuration(stat.total));
    case shareRole: {
        const double first = stats_.front().total;
        return first > 0 ? stat.total / first : 0;
    }
    case detailsRole:
        if (stat.count == 0) {
            return QString();
        }
        return tr("Average %1 · last %2")
            .arg(formatDuration(stat.total / stat.count),
                 relativeDate(localDateTime(stat.last), QDateTime::currentDateTime()));
    default:
        return {};
    }
}

QHash<int, QByteArray> AppStatsModel::roleNames() const {
    return {{appRole, "app"},
            {summaryRole, "summary"},
            {shareRole, "share"},
            {detailsRole, "details"},
            {ignoredRole, "ignored"}};
}

void AppStatsModel::follow() {
    auto stats = engine_ ? engine_->appStats() : std::vector<AppStat>();
    for (const QString& name : engine_ ? engine_->ignoredNames() : QStringList()) {
        if (std::none_of(stats.begin(), stats.end(),
                         [&name](const AppStat& stat) { return stat.app == name; })) {
            stats.push_back({name, 0, 0, 0});
        }
    }
    if (!stats.empty() && stats == stats_) {  // keeping the rows keeps the focus
        Q_EMIT dataChanged(index(0), index(count() - 1), {ignoredRole});
        return;
    }
    beginResetModel();
    stats_ = std::move(stats);
    endResetModel();
    Q_EMIT countChanged();
}

}  // namespace sordin
