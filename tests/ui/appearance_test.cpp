// SPDX-License-Identifier: MIT
// The appearance settings of the desktop, from its settings portal.
#include "rig/private_bus.h"
#include "ui/style/appearance.h"

#include <gmock/gmock.h>

#include <QDBusArgument>
#include <QDBusMessage>
#include <QTest>

namespace sordin {
namespace {

TEST(AppearanceTest, FollowsTheDesktopWhileItRuns) {
    const PrivateBus bus;
    const auto connect = [&](const char* name) {
        return QDBusConnection::connectToBus(QString::fromStdString(bus.address()), name);
    };
    qputenv("XDG_CURRENT_DESKTOP", "XFCE");
    auto portal = connect("portal");
    ASSERT_TRUE(portal.registerService("org.freedesktop.portal.Desktop"));
    Appearance look(nullptr, connect("program"));
    const auto change = [&](const char* group, const char* key, const QVariant& value) {
        portal.send(QDBusMessage::createSignal("/org/freedesktop/portal/desktop",
                                               "org.freedesktop.portal.Settings", "SettingChanged")
                    << group << key << QVariant::fromValue(QDBusVariant(value)));
    };
    const auto becomes = [](const auto& condition) { return QTest::qWaitFor(condition, 30'000); };
    ASSERT_TRUE(portal.registerService("org.xfce.Xfconf"));
    for (const auto& [theme, dark] : {std::pair("Mint-Y-Dark-Aqua", true), std::pair("Arc-Darker", false),
                                      std::pair("Adwaita-dark", true), std::pair("Greybird", false)}) {
        portal.send(QDBusMessage::createSignal("/org/xfce/Xfconf", "org.xfce.Xfconf", "PropertyChanged")
                    << "xsettings"
                    << "/Net/ThemeName" << QVariant::fromValue(QDBusVariant(theme)));
        EXPECT_TRUE(becomes([&, isDark = dark] { return look.dark() == isDark; })) << theme;
    }
    for (const bool dark : {true, false}) {
        change("org.freedesktop.appearance", "color-scheme", dark ? 1U : 2U);
        EXPECT_TRUE(becomes([&] { return look.dark() == dark; })) << dark;
    }
    QDBusArgument orange;
    orange.beginStructure();
    orange << 1.0 << 0.5 << 0.0;
    orange.endStructure();
    change("org.freedesktop.appearance", "accent-color", QVariant::fromValue(orange));
    EXPECT_TRUE(becomes([&] { return look.accent().name() == "#ff8000"; }));
    for (const bool animations : {false, true}) {
        change("org.gnome.desktop.interface", "enable-animations", animations);
        EXPECT_TRUE(becomes([&] { return look.reducedMotion() != animations; })) << animations;
    }
}

}  // namespace
}  // namespace sordin
