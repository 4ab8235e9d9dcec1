// SPDX-License-Identifier: MIT
#pragma once

#include "platform/status_item.h"
#include "ui/model/status_label.h"

#include <QObject>
#include <functional>

namespace sordin {

/// Keeps the desktop's icon at what the engine is doing, with a menu that reaches everything without a
/// window. Lives on the main thread.
class StatusPresenter : public QObject {
    Q_OBJECT

public:
    /// What the menu does beside what the engine does. None may be empty. The token (or none) is the one by
    /// which the desktop lets a window of ours come to the front.
    struct Actions {
        std::function<void(const QString& token)> showPanel;
        std::function<void(const QString& token)> openMain;
        std::function<void()> quit;
        std::function<bool()> startsAtLogin;
        std::function<void(bool)> setStartsAtLogin;
    };

    /// `engine` and `item` must outlive it.
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
