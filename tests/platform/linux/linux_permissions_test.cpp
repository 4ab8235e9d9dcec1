// SPDX-License-Identifier: MIT
#include "bus_fixture.h"
#include "platform/linux/session/linux_permissions.h"

#include <QDBusVirtualObject>
#include <cstdlib>

namespace sordin {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// An object that accepts every call and records it.
class Helper : public QDBusVirtualObject {
public:
    Helper(QDBusConnection bus, const QString& name) : bus_(std::move(bus)), name_(name) {
        bus_.registerVirtualObject("/", this, QDBusConnection::SubPath);
        bus_.registerService(name);
    }
    ~Helper() override {
        bus_.unregisterObject("/");
        bus_.unregisterService(name_);
    }
    Q_DISABLE_COPY_MOVE(Helper)

    [[nodiscard]] QString introspect(const QString& /*path*/) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& /*bus*/) override {
        calls.push_back((message.path() + ' ' + message.member()).toStdString());
        last = message;
        return true;
    }

    std::vector<std::string> calls;
    QDBusMessage last;

private:
    QDBusConnection bus_;
    QString name_;
};

class LinuxPermissionsTest : public BusTest {};

TEST_F(LinuxPermissionsTest, OnlyASandboxWithoutTheServersSocketLacksThem) {
    const TemporaryFolder folder;
    setenv("XDG_RUNTIME_DIR", folder.path().c_str(), 1);
    unsetenv("PIPEWIRE_RUNTIME_DIR");
    unsetenv("PIPEWIRE_REMOTE");
    unsetenv("PULSE_SERVER");
    const LinuxPermissions permissions(program, folder / "sandbox");
    EXPECT_TRUE(permissions.screenCapturePreflight()) << "an absent server is not a missing permission";
    writeText(folder / "sandbox", "");
    EXPECT_FALSE(permissions.screenCapturePreflight());
    setenv("PIPEWIRE_REMOTE", "other", 1);
    writeText(folder / "pipewire-0", "");
    EXPECT_FALSE(permissions.screenCapturePreflight()) << "this socket belongs to another server";
    unsetenv("PIPEWIRE_REMOTE");
    EXPECT_TRUE(permissions.screenCapturePreflight());
    std::filesystem::remove(folder / "pipewire-0");
    setenv("PULSE_SERVER", ("unix:" + (folder / "pulse").string()).c_str(), 1);
    EXPECT_FALSE(permissions.screenCapturePreflight());
    writeText(folder / "pulse", "");
    EXPECT_TRUE(permissions.screenCapturePreflight()) << "PulseAudio's socket";
    unsetenv("PULSE_SERVER");
    unsetenv("XDG_RUNTIME_DIR");
}

TEST_F(LinuxPermissionsTest, OpensTheBestOfTheDesktopsProgramsThatHelp) {
    LinuxPermissions permissions(program);
    EXPECT_FALSE(permissions.openSettings("Privacy_ScreenCapture"));  // no program is available
    {
        Helper settings(desktop, "org.gnome.Settings");
        EXPECT_TRUE(permissions.openSettings("Privacy_ScreenCapture"));
        ASSERT_TRUE(comes([&] { return settings.calls.size() == 1; }));
        EXPECT_EQ(settings.calls[0], "/org/gnome/Settings ActivateAction");
        EXPECT_EQ(settings.last.signature(), "sava{sv}");
        EXPECT_FALSE(permissions.openSettings("no such page"));
        EXPECT_FALSE(permissions.openSettings("Privacy_SpeechRecognition"));
        static_cast<void>(
            ask("/", "org.freedesktop.DBus.Peer", "Ping"));  // earlier messages have arrived after this
        EXPECT_EQ(settings.calls.size(), 1U);
    }
    const Helper software(desktop, "org.gnome.Software");
    const Helper installer(program, "org.freedesktop.PackageKit");
    EXPECT_TRUE(permissions.openSettings("Privacy_SpeechRecognition"));
    ASSERT_TRUE(comes([&] { return installer.calls.size() == 1; }));
    EXPECT_THAT(installer.calls, ElementsAre("/org/freedesktop/PackageKit InstallPackageNames"));
    EXPECT_EQ(installer.last.arguments().value(0).toStringList(), QStringList("pocketsphinx-en-us"));
    EXPECT_THAT(software.calls, IsEmpty());
    EXPECT_FALSE(LinuxPermissions(QDBusConnection("there is none")).openSettings("Privacy_ScreenCapture"));
}

}  // namespace
}  // namespace sordin
