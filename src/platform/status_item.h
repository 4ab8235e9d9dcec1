// SPDX-License-Identifier: MIT
#pragma once

#include <QPoint>
#include <QString>
#include <functional>
#include <vector>

namespace sordin {

/// One line of the menu behind the icon.
struct StatusMenuEntry {
    enum class Kind { action, toggle, separator };

    Kind kind = Kind::action;
    QString text;  ///< none in a separator
    bool enabled = true;
    bool checked = false;  ///< of a toggle
    /// May be empty. Called on the main thread, with the token (or none) by which the desktop lets a window
    /// of ours come to the front.
    std::function<void(const QString& token)> triggered;

    /// Whether it looks the same.
    [[nodiscard]] bool operator==(const StatusMenuEntry& other) const {
        return kind == other.kind && text == other.text && enabled == other.enabled &&
               checked == other.checked;
    }
};

/// The program's icon among those that the desktop shows all the time. Lives on the main thread.
class StatusItem {
public:
    struct Handlers {
        /// Clicked at this place of the screen, in its own pixels; (0, 0) where the desktop does not say.
        /// With the token (or none) by which the desktop lets a window of ours come to the front.
        std::function<void(QPoint at, const QString& token)> activated;
        /// Clicked with the middle button.
        std::function<void()> toggled;
    };

    virtual ~StatusItem() = default;

    /// None of the two may be empty.
    virtual void setHandlers(Handlers handlers) = 0;
    /// By the name of a symbol, as the engine has it for its state.
    virtual void setSymbol(const QString& name) = 0;
    /// What the icon says when pointed at.
    virtual void setText(const QString& text) = 0;
    /// All of it, from top to bottom.
    virtual void setMenu(std::vector<StatusMenuEntry> entries) = 0;
    /// Whether the desktop shows it. Desktops may begin and cease to at any time.
    [[nodiscard]] virtual bool isShown() const = 0;
};

}  // namespace sordin
