// SPDX-License-Identifier: MIT
#include "platform/linux/session/linux_permissions.h"

#include "platform/linux/session/dbus_structs.h"

#include <QDBusMessage>
#include <QStringList>
#include <cstdlib>
#include <string_view>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace sordin {

namespace {

namespace fs = std::filesystem;

/// Returns the path of PipeWire's socket.
fs::path pipeWireSocket() {
    const char* name = std::getenv("PIPEWIRE_REMOTE");
    fs::path socket = name != nullptr && *name != '\0' ? name : "pipewire-0";
    for (const char* variable : {"PIPEWIRE_RUNTIME_DIR", "XDG_RUNTIME_DIR"}) {
        if (const char* folder = std::getenv(variable)) {
            return fs::path(folder) / socket;
        }
    }
    return socket;
}

/// Returns the path of PulseAudio's socket. Sandboxes set PULSE_SERVER.
fs::path pulseSocket() {
    constexpr std::string_view local = "unix:";
    const char* server = std::getenv("PULSE_SERVER");
    if (server != nullptr && std::string_view(server).substr(0, local.size()) == local) {
        return server + local.size();
    }
    const char* folder = std::getenv("XDG_RUNTIME_DIR");
    return fs::path(folder != nullptr ? folder : "") / "pulse" / "native";
}

bool reachable(const fs::path& socket) {
    return access(socket.c_str(), R_OK | W_OK) == 0;
}

const QString applicationInterface = QStringLiteral("org.freedesktop.Application");

/// `service` is the program's bus name; the object path follows from it.
QDBusMessage applicationCall(const QString& service, const char* method) {
    return QDBusMessage::createMethodCall(service, '/' + QString(service).replace('.', '/').replace('-', '_'),
                                          applicationInterface, QLatin1String(method));
}

QDBusMessage activation(const char* service) {
    auto call = applicationCall(QLatin1String(service), "Activate");
    call << QVariantMap();
    return call;
}

QDBusMessage action(const char* service, const char* name, const QVariant& parameter) {
    auto call = applicationCall(QLatin1String(service), "ActivateAction");
    call << QLatin1String(name) << QVariantList{parameter} << QVariantMap();
    return call;
}

/// Offers to install the package with the decoder's models.
QDBusMessage installation(const QString& package) {
    auto call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.PackageKit"), QStringLiteral("/org/freedesktop/PackageKit"),
        QStringLiteral("org.freedesktop.PackageKit.Modify2"), QStringLiteral("InstallPackageNames"));
    call << QStringList(package) << QStringLiteral("show-confirm-search,hide-finished")
         << QStringLiteral("org.sordin.Sordin") << QVariantMap();
    return call;
}

/// Returns calls that lead the user to the setting, best first.
QList<QDBusMessage> helpFor(const std::string& anchor) {
    if (anchor == "Privacy_ScreenCapture") {
        registerDbusStructs();
        return {activation("com.github.tchx84.Flatseal"),
                action("org.gnome.Settings", "launch-panel",
                       QVariant::fromValue(SettingsPanel{QStringLiteral("applications"), {}})),
                activation("org.kde.systemsettings")};
    }
    if (anchor == "Privacy_SpeechRecognition") {
        const QString models = QStringLiteral("pocketsphinx-en-us");
        return {installation(models), action("org.gnome.Software", "search", models),
                activation("org.kde.discover")};
    }
    return {};
}

/// Returns the names that exist on the bus or that the bus can start.
QStringList reachableNames(const QDBusConnection& bus) {
    constexpr int patience = 1000;  // milliseconds; the bus itself replies
    QStringList names;
    for (const char* method : {"ListNames", "ListActivatableNames"}) {
        const auto question = QDBusMessage::createMethodCall(
            QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
            QStringLiteral("org.freedesktop.DBus"), QLatin1String(method));
        const auto answer = bus.call(question, QDBus::Block, patience);
        names += answer.arguments().value(0).toStringList();
    }
    return names;
}

}  // namespace

LinuxPermissions::LinuxPermissions(QDBusConnection bus, fs::path sandboxMark)
    : bus_(std::move(bus)), sandboxMark_(std::move(sandboxMark)) {}

bool LinuxPermissions::screenCapturePreflight() const {
    std::error_code ignored;
    // Outside a sandbox, an unreachable server does not mean a missing permission.
    return !fs::exists(sandboxMark_, ignored) || reachable(pipeWireSocket()) || reachable(pulseSocket());
}

bool LinuxPermissions::openSettings(const std::string& anchor) {
    if (!bus_.isConnected()) {
        return false;
    }
    const QStringList names = reachableNames(bus_);
    for (const QDBusMessage& call : helpFor(anchor)) {
        if (names.contains(call.service())) {
            return bus_.send(call);
        }
    }
    return false;
}

}  // namespace sordin
