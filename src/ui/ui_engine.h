// SPDX-License-Identifier: MIT
#pragma once

#include "ui/style/appearance.h"

#include <QQmlEngine>
#include <QQuickWindow>
#include <memory>

namespace sordin {

class SordinEngine;

/// Makes the windows. One at a time, on the main thread; windows must be gone before it goes.
class UiEngine {
public:
    UiEngine();
    ~UiEngine();
    UiEngine(const UiEngine&) = delete;
    UiEngine& operator=(const UiEngine&) = delete;

    /// To be called before the first window, and once a QGuiApplication is there: what draws windows takes a
    /// third of the memory of one that uses the graphics card, and for this much less time. Sentences that
    /// are not true of this platform are replaced from here on.
    static void prepare();

    /// The main window, or the panel of the icon; not shown yet. Throws std::runtime_error if the program is
    /// not whole.
    [[nodiscard]] std::unique_ptr<QQuickWindow> mainWindow(SordinEngine& engine);
    [[nodiscard]] std::unique_ptr<QQuickWindow> panel(SordinEngine& engine);

    [[nodiscard]] Appearance& appearance() { return appearance_; }

private:
    [[nodiscard]] std::unique_ptr<QQuickWindow> window(const char* view, SordinEngine& engine);

    Appearance appearance_{nullptr};
    QQmlEngine qml_;
};

}  // namespace sordin
