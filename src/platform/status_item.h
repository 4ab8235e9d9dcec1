// SPDX-License-Identifier: MIT
#pragma once

#include <QPoint>
#include <QString>
#include <functional>
#include <vector>

namespace sordin {

/// One line of the icon's menu.
struct StatusMenuEntry {
    enum class Kind { action, toggle, separator };

    Kind kind = Kind::action;
    QString text;  ///< empty for a separator
    bool enabled = true;
    bool checked = false;  ///< for a toggle
    /// May be empty. Called on the main thread. `token` is the desktop's activation token, which lets a
    /// window of this program come to the front; it may be empty.
    std::function<void(const QString& token)> triggered;

    /// Whether both look the same; ignores `triggered`.
    [[nodiscard]] bool operator==(const StatusMenuEntry& other) const {
        return kind == other.kind && text == other.text && enabled == other.enabled &&
               checked == other.checked;
    }
};

/// The program's icon in the desktop's panel. Main thread only.
class StatusItem {
public:
    struct Handlers {
        /// The icon was clicked. `at` is in physical screen pixels; (0, 0) if the desktop does not provide a
        /// place. `token` is the activation token as in StatusMenuEntry.
        std::function<void(QPoint at, const QString& token)> activated;
        /// The icon was clicked with the middle button.
        std::function<void()> toggled;
    };

    virtual ~StatusItem() = default;

    /// Neither handler may be empty.
    virtual void setHandlers(Handlers handlers) = 0;
    /// Sets the icon by the name of its symbol, as the engine publishes it.
    virtual void setSymbol(const QString& name) = 0;
    /// Sets the tooltip.
    virtual void setText(const QString& text) = 0;
    /// Replaces the whole menu, from top to bottom.
    virtual void setMenu(std::vector<StatusMenuEntry> entries) = 0;
    /// Whether the desktop shows the icon now. This can change at any time.
    [[nodiscard]] virtual bool isShown() const = 0;
};

}  // namespace sordin
