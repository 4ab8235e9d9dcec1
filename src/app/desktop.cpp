// SPDX-License-Identifier: MIT
#include "app/desktop.h"

#include "platform/linux/desktop/display.h"
#include "platform/linux/desktop/sway.h"
#include "platform/linux/storage/user_folders.h"
#include "support/own_files.h"

#include <QDBusConnection>
#include <QGuiApplication>
#include <QIcon>
#include <QLoggingCategory>
#include <QSessionManager>

namespace sordin {

namespace {

Q_LOGGING_CATEGORY(desktopLog, "sordin.desktop", QtWarningMsg)

/// Ends the program. Not quit(): that asks the windows, and closing does not end them.
void leave() {
    QCoreApplication::exit();
}

/// The folder of our icon themes; empty if the program is not whole, which costs no more than the icon.
std::filesystem::path iconFolder(const std::filesystem::path& program) {
    const auto theme = findDataFile(program, "icons/hicolor/index.theme");
    return theme ? theme->parent_path().parent_path() : std::filesystem::path();
}

QString toText(const std::filesystem::path& path) {
    return QString::fromStdString(path.string());
}

/// From the pictures that are installed for desktops, since drawings need a plugin of Qt's. `ours` is
/// iconFolder().
QIcon windowIcon(const std::filesystem::path& ours) {
    QIcon icon;
    const QString theme = toText(ours.parent_path().parent_path() / "icons/hicolor");
    for (const int size : {16, 24, 32, 48, 64, 128}) {
        icon.addFile(theme + QStringLiteral("/%1x%1/apps/org.sordin.Sordin.png").arg(size), {size, size});
    }
    return icon;
}

}  // namespace

Desktop::Desktop(SordinEngine& engine, const std::filesystem::path& program)
    : loginEntry_(autostartFolder(), program),
      item_(QDBusConnection::sessionBus(), toText(iconFolder(program))),
      windows_(engine, {[this] { return item_.isShown(); }, displayMixesWindows, bringForward,
                        hideFromTaskBar, makeTransparent, moveFocusedWindowToPointerInSway,
                        [](const QString& token) { endStartupNotification(token.toStdString()); },
                        qEnvironmentVariableIsSet("WAYLAND_DISPLAY"),
                        qgetenv("XDG_CURRENT_DESKTOP").contains("GNOME")}),
      presenter_(engine, item_,
                 {[this](const QString& token) { windows_.togglePanel({}, token); },
                  [this](const QString& token) { windows_.showMain(token); }, leave,
                  [this] { return loginEntry_.active(); },
                  [this](bool active) {
                      if (const auto error = loginEntry_.setActive(active)) {
                          qCWarning(desktopLog, "the entry for the login cannot be changed: %s",
                                    error.message().c_str());
                      }
                  }}) {
    QGuiApplication::setWindowIcon(windowIcon(iconFolder(program)));
    item_.setHandlers({[this](QPoint at, const QString& token) { windows_.togglePanel(at, token); },
                       [&engine] { engine.setIsEnabled(!engine.isEnabled()); }});
    QObject::connect(&windows_, &Windows::quit, qApp, leave);
    // Sessions that bring programs back would start it beside the user's own choice.
    QObject::connect(
        qApp, &QGuiApplication::commitDataRequest, &windows_,
        [](QSessionManager& session) { session.setRestartHint(QSessionManager::RestartNever); },
        Qt::DirectConnection);
}

}  // namespace sordin
