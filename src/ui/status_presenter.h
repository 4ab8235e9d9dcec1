// SPDX-License-Identifier: MIT
#pragma once

#include "platform/status_item.h"
#include "ui/model/status_label.h"

#include <QObject>
#include <functional>

namespace sordin {

/// Shows the engine's state in the desktop's icon, with a menu for all functions that need no window. Main
/// thread only.
class StatusPresenter : public QObject {
    Q_OBJECT

public:
    /// The menu actions that do not concern the engine. No function may be empty. `token` is the desktop's
    /// activation token, which lets a window of this program come to the front; it may be empty.
    struct Actions {
        std::function<void(const QString& token)> showPanel;
        std::function<void(const QString& token)> openMain;
        std::function<void()> quit;
        std::function<bool()> startsAtLogin;
        std::function<void(bool)> setStartsAtLogin;
    };

    /// `engine` and `item` must outlive this object.
    StatusPresenter(SordinEngine& engine, StatusItem& item, Actions actions);

private:
    void present();
    [[nodiscard]] std::vector<StatusMenuEntry> menu();

    SordinEngine& engine_;
    StatusItem& item_;
    const Actions actions_;
    StatusLabel label_;
};

}  // namespace sordin
