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

/// Ends the program. QGuiApplication::quit() would fail, because the windows ignore its close events.
void leave() {
    QCoreApplication::exit();
}

/// Returns the folder of the icon themes; empty in an incomplete installation, which then only lacks the
/// icon.
std::filesystem::path iconFolder(const std::filesystem::path& program) {
    const auto theme = findDataFile(program, "icons/hicolor/index.theme");
    return theme ? theme->parent_path().parent_path() : std::filesystem::path();
}

QString toText(const std::filesystem::path& path) {
    return QString::fromStdString(path.string());
}

/// Uses the installed PNG icons, because SVG icons need a Qt plugin. `ours` is iconFolder().
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
                          qCWarning(desktopLog, "cannot change the autostart entry: %s",
                                    error.message().c_str());
                      }
                  }}) {
    QGuiApplication::setWindowIcon(windowIcon(iconFolder(program)));
    item_.setHandlers({[this](QPoint at, const QString& token) { windows_.togglePanel(at, token); },
                       [&engine] { engine.setIsEnabled(!engine.isEnabled()); }});
    QObject::connect(&windows_, &Windows::quit, qApp, leave);
    // A session manager must not restart the program; the user's autostart setting decides.
    QObject::connect(
        qApp, &QGuiApplication::commitDataRequest, &windows_,
        [](QSessionManager& session) { session.setRestartHint(QSessionManager::RestartNever); },
        Qt::DirectConnection);
}

}  // namespace sordin
