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

/// The main window and the panel of the icon: one of each at most, made when it is wanted and gone when it is
/// closed, so that nothing is drawn and little is kept of what nobody sees. Lives on the main thread.
class Windows : public QObject {
    Q_OBJECT

public:
    struct Surroundings {
        /// Whether there is an icon by which a closed window can be had again. If not, closing minimises.
        std::function<bool()> iconIsShown;
        /// Whether windows may have transparent parts.
        std::function<bool()> mixesWindows;
        /// Asks the window manager to bring a window to the front.
        std::function<void(std::uint32_t window)> bringForward;
        /// Keeps a window that is not shown yet out of the list of windows.
        std::function<void(std::uint32_t window)> hideFromTaskBar;
        /// Prepares a window that is not shown yet for being seen through.
        std::function<void(std::uint32_t window)> makeTransparent;
        /// Has a Wayland compositor that can do so move our window that floats and has the focus to the
        /// pointer.
        std::function<void()> moveFocusedToPointer;
        /// Tells the desktop that what the user started with this token is there.
        std::function<void(const QString& token)> endStartupNotification;
        /// The X11 display belongs to a Wayland compositor, which keeps what happens over other windows to
        /// itself.
        bool isXwayland = false;
        /// A click on the desktop itself does not take the focus from a window (GNOME).
        bool desktopTakesNoFocus = false;
    };

    /// `engine` must outlive it. None of the functions may be empty. Those with the number of a window and
    /// endStartupNotification are called on X11 alone, moveFocusedToPointer on Wayland alone.
    Windows(SordinEngine& engine, Surroundings surroundings);
    ~Windows() override;
    Q_DISABLE_COPY_MOVE(Windows)

public Q_SLOTS:  // NOLINT(readability-redundant-access-specifiers): now they are slots
    /// Shows the main window in front of all others; `token` (or none) is the desktop's leave to do so.
    void showMain(const QString& token = {});

public:  // NOLINT(readability-redundant-access-specifiers): no slots any more
    /// Shows the panel beside the icon that was clicked at `click`, in pixels of the screens; (0, 0) where
    /// the desktop did not say. Closes it if it is open.
    void togglePanel(QPoint click, const QString& token = {});

    /// Null while there is none.
    [[nodiscard]] QQuickWindow* main() const { return main_.get(); }
    [[nodiscard]] QQuickWindow* panel() const { return panel_.get(); }

    bool eventFilter(QObject* object, QEvent* event) override;

private Q_SLOTS:  // NOLINT(readability-redundant-access-specifiers): now they are slots
    /// Panels register icons after the first window is shown, so the guide reads this as it goes.
    void tellOfIcon();

Q_SIGNALS:
    /// The user wants the program to end.
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
    std::optional<UiEngine> ui_;  // since the first window
    std::unique_ptr<QQuickWindow> main_;
    std::vector<std::unique_ptr<QWindow>> clickCatchers_;  // behind the panel
    std::unique_ptr<QQuickWindow> panel_;
    QSize mainSize_;                // the user's, from the last time
    QVariant sidebarWidth_;         // the same
    QElapsedTimer panelWasClosed_;  // not valid before
};

}  // namespace sordin
