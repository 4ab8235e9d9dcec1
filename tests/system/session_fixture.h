// SPDX-License-Identifier: MIT
#pragma once

#include "fake_panel.h"
#include "platform/linux/bus_fixture.h"
#include "system/sordin_fixture.h"

namespace sordin {

/// The real program in a session with a private bus. The test acts as the panel and as a client.
class SessionTest : public SordinTest, protected BusTalk {
protected:
    SessionTest() {
        beginServer();  // also disables the inherited bus
        bus.emplace();
        connection.emplace(QDBusConnection::connectToBus(QString::fromStdString(bus->address()), "desktop"));
    }
    ~SessionTest() override {
        program.reset();
        panel.reset();
        QDBusConnection::disconnectFromBus("desktop");
    }

    void showPanel() { panel.emplace(*connection); }
    /// Starts with the icon only, and waits until the panel shows it.
    void startHidden() {
        showPanel();
        listen({"--hidden"});
        ASSERT_TRUE(comes([&] { return !panel->items().empty(); })) << log();
    }

    /// Calls a method of the icon and returns the answer.
    [[nodiscard]] QDBusMessage ask(const char* path, const char* interface, const char* method,
                                   const QVariantList& arguments = {}) {
        return call(panel->items().back(), path, interface, method, arguments);
    }
    [[nodiscard]] QDBusMessage call(const QString& whom, const char* path, const char* interface,
                                    const char* method, const QVariantList& arguments = {}) {
        return answer(*connection, question(whom, path, interface, method, arguments));
    }
    [[nodiscard]] QString itemProperty(const char* name) {
        const auto answer = ask("/StatusNotifierItem", "org.freedesktop.DBus.Properties", "Get",
                                {"org.kde.StatusNotifierItem", name});
        return answer.arguments().value(0).value<QDBusVariant>().variant().toString();
    }

    /// Whether a setting gets this value on disk.
    bool becomesSetting(const char* key, const nlohmann::json& value) {
        return comes([&] {
            const auto all =
                nlohmann::json::parse(contentsOf(home / "config/Sordin/defaults.json"), {}, false);
            return all.is_object() && all.contains(key) && all[key] == value;
        });
    }
    /// Whether the program ends by itself with status 0.
    testing::AssertionResult quits() {
        const bool so = comes([&] { return !program->running(); }) && program->wait(deadline) == 0;
        return (so ? testing::AssertionSuccess() : testing::AssertionFailure()) << log();
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
