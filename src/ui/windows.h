// SPDX-License-Identifier: MIT
#pragma once

#include "ui/ui_engine.h"

#include <QElapsedTimer>
#include <QObject>
#include <QPoint>
#include <QSize>
#include <QVariant>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace sordin {

/// The main window and the icon's panel, at most one of each. A window is created when it is opened and
/// destroyed when it is closed, so that invisible windows cost neither time nor memory. Main thread only.
class Windows : public QObject {
    Q_OBJECT

public:
    struct Surroundings {
        /// Whether there is an icon to reopen a closed window. If not, closing minimizes the window.
        std::function<bool()> iconIsShown;
        /// Whether windows can have transparent parts.
        std::function<bool()> mixesWindows;
        /// Asks the window manager to bring a window to the front.
        std::function<void(std::uint32_t window)> bringForward;
        /// Keeps a window that is not shown yet out of task bars.
        std::function<void(std::uint32_t window)> hideFromTaskBar;
        /// Makes undrawn areas of a window transparent; called before the window is shown.
        std::function<void(std::uint32_t window)> makeTransparent;
        /// Moves this program's focused floating window to the pointer, if the Wayland compositor supports
        /// that.
        std::function<void()> moveFocusedToPointer;
        /// Ends the desktop's startup feedback for the launch with this token.
        std::function<void(const QString& token)> endStartupNotification;
        /// The X11 display belongs to a Wayland compositor, which does not report events over other windows.
        bool isXwayland = false;
        /// A click on the desktop background does not take the focus from a window (GNOME).
        bool desktopTakesNoFocus = false;
    };

    /// `engine` must outlive this object. No function may be empty. Functions with a window number and
    /// endStartupNotification are called only on X11, moveFocusedToPointer only on Wayland.
    Windows(SordinEngine& engine, Surroundings surroundings);
    ~Windows() override;
    Q_DISABLE_COPY_MOVE(Windows)

public Q_SLOTS:  // NOLINT(readability-redundant-access-specifiers): begins the slots
    /// Shows the main window in front of all others. `token` is the desktop's activation token; it may be
    /// empty.
    void showMain(const QString& token = {});

public:  // NOLINT(readability-redundant-access-specifiers): ends the slots
    /// Shows the panel beside the icon clicked at `click`, in physical screen pixels; (0, 0) if the desktop
    /// did not report a place. Closes the panel if it is open.
    void togglePanel(QPoint click, const QString& token = {});

    /// Null while closed.
    [[nodiscard]] QQuickWindow* main() const { return main_.get(); }
    [[nodiscard]] QQuickWindow* panel() const { return panel_.get(); }

    bool eventFilter(QObject* object, QEvent* event) override;

private Q_SLOTS:  // NOLINT(readability-redundant-access-specifiers): begins the slots
    /// Sets the window's `iconIsShown`. Desktops register icons after the first window is shown, so the guide
    /// updates it at each step.
    void tellOfIcon();

Q_SIGNALS:
    /// The user wants to quit the program.
    void quit();

private:
    [[nodiscard]] UiEngine& ui();
    void openPanel(QPoint click);
    void placePanel(QPoint click);
    void catchClicks();
    void use(const QString& token);
    void closePanel();
    bool closing(QEvent& event);

    SordinEngine& engine_;
    const Surroundings surroundings_;
    std::optional<UiEngine> ui_;  // created with the first window
    std::unique_ptr<QQuickWindow> main_;
    std::vector<std::unique_ptr<QWindow>> clickCatchers_;  // below the panel
    std::unique_ptr<QQuickWindow> panel_;
    QSize mainSize_;                // the user's last size
    QVariant sidebarWidth_;         // the user's last width
    QElapsedTimer panelWasClosed_;  // invalid until the panel is first closed
};

}  // namespace sordin
