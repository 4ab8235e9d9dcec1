// SPDX-License-Identifier: MIT
#include "ui/model/ad_history_model.h"

#include "engine/duration_text.h"
#include "ui/model/date_text.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace sordin {

void AdHistoryModel::setEngine(SordinEngine* engine) {
    if (!engine_.change(engine, this)) {
        return;
    }
    if (engine_) {
        connect(engine_.get(), &SordinEngine::historyChanged, this, &AdHistoryModel::follow);
    }
    follow();
    Q_EMIT engineChanged();
}

void AdHistoryModel::setShowTests(bool show) {
    if (show == showTests_) {
        return;
    }
    showTests_ = show;
    follow();
    Q_EMIT showTestsChanged();
}

int AdHistoryModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : count();
}

QVariant AdHistoryModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid)) {
        return {};
    }
    const AdEvent& event = shown_[static_cast<std::size_t>(index.row())];
    switch (role) {
    case Qt::DisplayRole:
    case appRole:
        return event.app;
    case realRole:
        return event.kind == AdEvent::Kind::muted;
    case startRole:
        return localDateTime(event.start);
    case detailsRole: {
        const QString reasons =
            event.reasons.isEmpty() ? QStringLiteral("–") : event.reasons.join(QStringLiteral(", "));
        return QString(isolated(dateAndTime(localDateTime(event.start))) + QStringLiteral(" · ") + reasons);
    }
    case durationRole:
        return formatDuration(event.duration);
    case confidenceRole:
        return static_cast<int>(std::clamp(event.peakConfidence, 0.0, 1.0) * 100);
    case summaryRole:
        return QString(QStringList{isolated(event.app), index.data(durationRole).toString(),
                                   index.data(detailsRole).toString(),
                                   event.kind == AdEvent::Kind::muted ? tr("Muted") : tr("Test"),
                                   tr("%1% conf.").arg(index.data(confidenceRole).toInt())}
                           .join(QStringLiteral(", ")));
    default:
        return {};
    }
}

QString AdHistoryModel::summary(int row) const {
    return index(row).data(summaryRole).toString();
}

QHash<int, QByteArray> AdHistoryModel::roleNames() const {
    return {{appRole, "app"},         {realRole, "real"},         {startRole, "start"},
            {detailsRole, "details"}, {durationRole, "duration"}, {confidenceRole, "confidence"},
            {summaryRole, "summary"}};
}

AdHistory AdHistoryModel::wanted() const {
    AdHistory events;
    if (engine_) {
        std::copy_if(
            engine_->history().begin(), engine_->history().end(), std::back_inserter(events),
            [this](const AdEvent& event) { return showTests_ || event.kind == AdEvent::Kind::muted; });
    }
    return events;
}

/// A new event at the front, possibly with the last one dropped, moves no other row, so that a view keeps its
/// position.
void AdHistoryModel::follow() {
    AdHistory events = wanted();
    if (events == shown_) {
        return;
    }
    const bool added = !shown_.empty() && events.size() > 1 && events.size() <= shown_.size() + 1 &&
                       std::equal(events.begin() + 1, events.end(), shown_.begin());
    if (added) {
        if (events.size() == shown_.size()) {
            beginRemoveRows({}, count() - 1, count() - 1);
            shown_.pop_back();
            endRemoveRows();
        }
        beginInsertRows({}, 0, 0);
        shown_ = std::move(events);
        endInsertRows();
    } else {
        beginResetModel();
        shown_ = std::move(events);
        endResetModel();
    }
    Q_EMIT countChanged();
    Q_EMIT eventsChanged();
}

}  // namespace sordin
