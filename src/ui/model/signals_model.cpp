// SPDX-License-Identifier: MIT
#include "ui/model/signals_model.h"

#include <algorithm>

namespace sordin {

void SignalsModel::setEngine(SordinEngine* engine) {
    if (!engine_.change(engine, this)) {
        return;
    }
    if (engine_) {
        connect(engine_.get(), &SordinEngine::signalReadingsChanged, this, &SignalsModel::follow);
    }
    follow();
    Q_EMIT engineChanged();
}

int SignalsModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : count();
}

QVariant SignalsModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid)) {
        return {};
    }
    const SignalReading& reading = readings_[static_cast<std::size_t>(index.row())];
    switch (role) {
    case Qt::DisplayRole:
    case nameRole:
        return reading.name;
    case levelRole:
        return std::clamp(reading.value, 0.0, 1.0);
    case valueRole:
        return QString::number(reading.value, 'f', 2);
    default:
        return {};
    }
}

QHash<int, QByteArray> SignalsModel::roleNames() const {
    return {{nameRole, "name"}, {levelRole, "level"}, {valueRole, "value"}};
}

void SignalsModel::follow() {
    auto readings = engine_ ? engine_->signalReadings() : std::vector<SignalReading>();
    const bool sameRows = std::equal(readings.begin(), readings.end(), readings_.begin(), readings_.end(),
                                     [](const auto& a, const auto& b) { return a.name == b.name; });
    if (sameRows) {
        readings_ = std::move(readings);
        if (!readings_.empty()) {
            Q_EMIT dataChanged(index(0), index(count() - 1), {levelRole, valueRole});
        }
        return;
    }
    beginResetModel();
    readings_ = std::move(readings);
    endResetModel();
    Q_EMIT countChanged();
}

}  // namespace sordin
