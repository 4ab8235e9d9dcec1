// SPDX-License-Identifier: MIT
#pragma once

#include "engine/sordin_engine.h"
#include "platform/linux/desktop/login_entry.h"
#include "platform/linux/session/status_notifier_item.h"
#include "ui/status_presenter.h"
#include "ui/windows.h"

#include <filesystem>

namespace sordin {

/// What the user sees of the program: its icon and its windows. Lives on the main thread.
class Desktop {
public:
    /// `engine` must outlive it. `program` is the running program's own path. Needs a QGuiApplication, which
    /// ends when the user wants the program to.
    Desktop(SordinEngine& engine, const std::filesystem::path& program);
    Desktop(const Desktop&) = delete;
    Desktop& operator=(const Desktop&) = delete;
    ~Desktop() = default;

    /// See Windows.
    void showMain(const QString& token = {}) { windows_.showMain(token); }

private:
    const LoginEntry loginEntry_;
    StatusNotifierItem item_;
    Windows windows_;
    StatusPresenter presenter_;
};

}  // namespace sordin
