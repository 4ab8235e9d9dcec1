// SPDX-License-Identifier: MIT
#pragma once

#include "ui/style/appearance.h"

#include <QQmlEngine>
#include <QQuickWindow>
#include <memory>

namespace sordin {

class SordinEngine;

/// Creates the windows. At most one instance; main thread only. Destroy all windows before this object.
class UiEngine {
public:
    UiEngine();
    ~UiEngine();
    UiEngine(const UiEngine&) = delete;
    UiEngine& operator=(const UiEngine&) = delete;

    /// Call this before the first window and after the QGuiApplication is created. Selects the software
    /// renderer, which needs a third of the memory of the hardware renderer and, for these windows, less
    /// time. Also installs the texts for this platform.
    static void prepare();

    /// Creates the main window or the icon's panel, hidden. Throws std::runtime_error if the installation is
    /// incomplete.
    [[nodiscard]] std::unique_ptr<QQuickWindow> mainWindow(SordinEngine& engine);
    [[nodiscard]] std::unique_ptr<QQuickWindow> panel(SordinEngine& engine);

    [[nodiscard]] Appearance& appearance() { return appearance_; }

private:
    [[nodiscard]] std::unique_ptr<QQuickWindow> window(const char* view, SordinEngine& engine);

    Appearance appearance_{nullptr};
    QQmlEngine qml_;
};

}  // namespace sordin
