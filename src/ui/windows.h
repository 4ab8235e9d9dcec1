// SPDX-License-Identifier: MIT
#pragma once

#include "ui/ui_engine.h"

#include <QElapsedTimer>
#include <QObject>
#include <QPoint>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

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
        /// Asks the window manager to bring a window to the front, where windows have numbers.
        std::function<void(std::uint32_t)> bringForward;
    };

    /// `engine` must outlive it. None of the functions may be empty.
    Windows(SordinEngine& engine, Surroundings surroundings);
    ~Windows() override;
    Q_DISABLE_COPY_MOVE(Windows)

public Q_SLOTS:  // NOLINT(readability-redundant-access-specifiers): now they are slots
    /// Shows the main window in front of all others; `token` (or none) is the desktop's leave to do so.
    void showMain(const QString& token = {});

public:  // NOLINT(readability-redundant-access-specifiers): no slots any more
    /// Shows the panel beside the icon that was clicked at `click`, in pixels of the screens; where that is
    /// (0, 0), beside the pointer. Closes it if it is open.
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
    void closePanel();
    bool closing(QEvent& event);

    SordinEngine& engine_;
    const Surroundings surroundings_;
    std::optional<UiEngine> ui_;  // since the first window
    std::unique_ptr<QQuickWindow> main_;
    std::unique_ptr<QQuickWindow> panel_;
    QSize mainSize_;                // the user's, from the last time
    QElapsedTimer panelWasClosed_;  // not valid before
};

}  // namespace sordin
