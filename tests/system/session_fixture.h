// SPDX-License-Identifier: MIT
#pragma once

#include "fake_panel.h"
#include "rig/private_bus.h"
#include "system/sordin_fixture.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusPendingCall>

namespace sordin {

/// The real program in a session with a bus of its own, where the test is the panel and who asks.
class SessionTest : public SordinTest {
protected:
    SessionTest() {
        beginServer();  // which turns the bus off that is there
        openBus();
    }
    ~SessionTest() override {
        program.reset();
        panel.reset();
        QDBusConnection::disconnectFromBus("desktop");
    }

    /// Another one if there is one.
    void openBus() {
        QDBusConnection::disconnectFromBus("desktop");
        bus.reset();
        bus.emplace();
        connection.emplace(QDBusConnection::connectToBus(QString::fromStdString(bus->address()), "desktop"));
    }
    void showPanel() { panel.emplace(*connection); }
    /// Starts with the icon alone, and waits until the panel shows it.
    void startHidden() {
        showPanel();
        listen({"--hidden"});
        ASSERT_TRUE(comes([&] { return !panel->items().empty(); })) << log();
    }

    /// Whether it comes to hold while the panel answers.
    template <class Condition>
    static bool comes(Condition condition, std::chrono::milliseconds within = deadline) {
        return waitUntil(
            [&] {
                QCoreApplication::processEvents();
                return condition();
            },
            within);
    }
    /// What the icon answers.
    [[nodiscard]] QDBusMessage ask(const char* path, const char* interface, const char* method,
                                   const QVariantList& arguments = {}) {
        return call(panel->items().back(), path, interface, method, arguments);
    }
    [[nodiscard]] QDBusMessage call(const QString& whom, const char* path, const char* interface,
                                    const char* method, const QVariantList& arguments = {}) {
        auto question = QDBusMessage::createMethodCall(whom, path, interface, method);
        question.setArguments(arguments);
        const auto answer = connection->asyncCall(question);
        comes([&] { return answer.isFinished(); });
        return answer.reply();
    }
    [[nodiscard]] QString itemProperty(const char* name) {
        const auto answer = ask("/StatusNotifierItem", "org.freedesktop.DBus.Properties", "Get",
                                {"org.kde.StatusNotifierItem", name});
        return answer.arguments().value(0).value<QDBusVariant>().variant().toString();
    }

    [[nodiscard]] nlohmann::json defaults() const {
        return nlohmann::json::parse(contentsOf(home / "config/Sordin/defaults.json"), nullptr, false);
    }
    /// Whether a setting comes to have this value on the disk.
    bool becomesSetting(const char* key, const nlohmann::json& value) {
        return comes([&] {
            const auto all = defaults();
            return all.is_object() && all.contains(key) && all[key] == value;
        });
    }
    [[nodiscard]] int secondStart(const std::vector<std::string>& arguments = {}) {
        std::vector<std::string> command{SORDIN_PROGRAM};
        command.insert(command.end(), arguments.begin(), arguments.end());
        ChildProcess second(command, {.environment = environment(), .log = home / "second"});
        comes([&] { return !second.running(); });
        return second.wait(std::chrono::seconds(0)).value_or(-1);
    }

    std::optional<PrivateBus> bus;
    std::optional<QDBusConnection> connection;
    std::optional<FakePanel> panel;
};

}  // namespace sordin
