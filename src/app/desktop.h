// SPDX-License-Identifier: MIT
#pragma once

#include "engine/sordin_engine.h"
#include "platform/linux/desktop/login_entry.h"
#include "platform/linux/session/status_notifier_item.h"
#include "ui/status_presenter.h"
#include "ui/windows.h"

#include <filesystem>

namespace sordin {

/// The visible part of the program: its icon and its windows. Main thread only.
class Desktop {
public:
    /// `engine` must outlive this object. `program` is the path of the running program. Needs a
    /// QGuiApplication, which exits when the user quits the program.
    Desktop(SordinEngine& engine, const std::filesystem::path& program);
    Desktop(const Desktop&) = delete;
    Desktop& operator=(const Desktop&) = delete;
    ~Desktop() = default;

    /// See Windows::showMain().
    void showMain(const QString& token = {}) { windows_.showMain(token); }

private:
    const LoginEntry loginEntry_;
    StatusNotifierItem item_;
    Windows windows_;
    StatusPresenter presenter_;
};

}  // namespace sordin
