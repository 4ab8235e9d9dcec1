// SPDX-License-Identifier: MIT
#pragma once

#include "ui/model/followed_engine.h"

#include <QAbstractListModel>
#include <QQmlEngine>

namespace sordin {

/// The detector's signals in the detector's order, one row each. The rows are kept while their names stay the
/// same.
class SignalsModel : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(sordin::SordinEngine* engine READ engine WRITE setEngine NOTIFY engineChanged REQUIRED)
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    enum Role {
        nameRole = Qt::UserRole,
        levelRole,  ///< clamped to 0 to 1
        valueRole,  ///< text with two decimals, not clamped
    };

    using QAbstractListModel::QAbstractListModel;

    [[nodiscard]] SordinEngine* engine() const { return engine_.get(); }
    void setEngine(SordinEngine* engine);
    [[nodiscard]] int count() const { return static_cast<int>(readings_.size()); }

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

Q_SIGNALS:
    void engineChanged();
    void countChanged();

private:
    void follow();

    FollowedEngine engine_;
    std::vector<SignalReading> readings_;
};

}  // namespace sordin
