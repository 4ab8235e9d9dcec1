// SPDX-License-Identifier: MIT
#include "bus_fixture.h"
#include "platform/linux/session/application_service.h"

#include <QThread>

namespace sordin {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Name = ApplicationService::Name;

class ApplicationServiceTest : public BusTest {
protected:
    std::vector<QString> tokens;
    const std::function<void(const QString&)> note = [this](const QString& token) {
        tokens.push_back(token);
    };
};

TEST_F(ApplicationServiceTest, OneHasTheNameAndTheOthersAskItToTheFront) {
    std::optional<ApplicationService> first(std::in_place, program, note);
    EXPECT_EQ(first->name(), Name::ours);
    ApplicationService second(
        desktop, [](const QString&) { ADD_FAILURE() << "the second service must not be activated"; });
    ASSERT_EQ(second.name(), Name::taken);
    // Another process would wait for the answer. Here, another thread does.
    const auto activate = [&] {
        bool answered = false;
        const std::unique_ptr<QThread> thread(QThread::create([&] { answered = second.activateOther(); }));
        thread->start();
        comes([&] { return thread->isFinished(); });
        return answered;
    };
    EXPECT_TRUE(activate());
    setenv("XDG_ACTIVATION_TOKEN", "token", 1);
    EXPECT_TRUE(activate());
    unsetenv("XDG_ACTIVATION_TOKEN");
    EXPECT_THAT(tokens, ElementsAre("", "token"));

    first.reset();
    EXPECT_FALSE(activate()) << "the name has no owner";
    EXPECT_EQ(ApplicationService(program, note).name(), Name::ours) << "the name is free again";
}

TEST_F(ApplicationServiceTest, TheDesktopAsksInAnyOfItsWays) {
    const ApplicationService service(program, note);
    constexpr auto path = "/org/sordin/Sordin";
    constexpr auto interface = "org.freedesktop.Application";
    const QVariantMap data{{"activation-token", "t"}};
    EXPECT_EQ(ask(path, interface, "Activate", {data}).type(), QDBusMessage::ReplyMessage);
    EXPECT_EQ(ask(path, interface, "Open", {QStringList("file:///a"), data}).type(),
              QDBusMessage::ReplyMessage);
    for (const QVariantMap& other : {QVariantMap{{"activation-token", 7}},
                                     {{"desktop-startup-id", "old"}},
                                     {{"desktop-startup-id", "old"}, {"activation-token", "new"}}}) {
        EXPECT_EQ(ask(path, interface, "Activate", {other}).type(), QDBusMessage::ReplyMessage);
    }
    EXPECT_THAT(tokens, ElementsAre("t", "t", "7", "old", "new"));
    EXPECT_EQ(ask(path, interface, "Activate", {"not a map"}).type(), QDBusMessage::ErrorMessage);
}

TEST_F(ApplicationServiceTest, ActionsOfTheDesktopAreDone) {
    std::vector<bool> started;
    const auto act = [this](const char* action, const QVariantList& parameter = {}) {
        return ask(ApplicationService::path, "org.freedesktop.Application", "ActivateAction",
                   {action, parameter, QVariantMap{{"activation-token", "t"}}})
            .errorName();
    };
    const auto actions = [&started] {
        return std::map<QString, ApplicationService::Action>{
            {"Pause", [&started](bool starts) { started.push_back(starts); }}};
    };
    {
        ApplicationService service(program, note);
        const QString refused = "org.freedesktop.DBus.Error.InvalidArgs";
        EXPECT_EQ(act("Pause"), refused) << "there is no action yet";
        service.setActions(actions());
        EXPECT_EQ(act("Pause"), "");
        EXPECT_EQ(act("Resume"), refused);
        EXPECT_EQ(act("Pause", {7}), refused) << "the action takes no argument";
        EXPECT_THAT(started, ElementsAre(false));
    }
    started.clear();
    ApplicationService service(program, note, true);
    service.setActions(actions());
    EXPECT_EQ(act("Pause"), "");
    EXPECT_EQ(act("Pause"), "");
    EXPECT_THAT(started, ElementsAre(true, false)) << "the bus started the program for the first call";
    EXPECT_THAT(tokens, IsEmpty()) << "no window is requested";
}

TEST_F(ApplicationServiceTest, ItsNameIsTakenAgainOnABusThatWasStartedAnew) {
    const TemporaryFolder folder;
    const std::string address = "unix:path=" + (folder / "bus").string();
    setenv("DBUS_SESSION_BUS_ADDRESS", address.c_str(), 1);
    std::optional<ChildProcess> daemon;
    const auto startBus = [&] {
        daemon.reset();
        std::filesystem::remove(folder / "bus");
        daemon.emplace(std::vector<std::string>{"dbus-daemon", "--session", "--nofork", "--nopidfile",
                                                "--print-address=1", "--address=" + address},
                       ChildOptions{.readOutput = true});
        ASSERT_TRUE(daemon->readLine(std::chrono::seconds(20)));
    };
    startBus();
    const ApplicationService service(QDBusConnection::connectToBus(QString::fromStdString(address), "before"),
                                     note);
    ASSERT_EQ(service.name(), Name::ours);
    startBus();
    const auto asker = QDBusConnection::connectToBus(QString::fromStdString(address), "after");
    EXPECT_TRUE(comes([&] {
        return answer(asker, question(ApplicationService::id, ApplicationService::path,
                                      "org.freedesktop.Application", "Activate", {QVariantMap()}))
                   .type() == QDBusMessage::ReplyMessage;
    }));
    EXPECT_THAT(tokens, ElementsAre(""));
}

TEST_F(ApplicationServiceTest, WithoutABusThereIsNoName) {
    EXPECT_EQ(ApplicationService(QDBusConnection("there is none"), note).name(), Name::none);
}

}  // namespace
}  // namespace sordin
