// SPDX-License-Identifier: MIT
// Random calls of all members of the program on the bus. The bus itself rejects malformed messages, so
// everything else can arrive.
#include "bus_fixture.h"
#include "platform/linux/session/control_interface.h"
#include "platform/linux/session/status_notifier_item.h"
#include "random_seed.h"

#include <QDBusMetaType>
#include <QDBusUnixFileDescriptor>
#include <QXmlStreamReader>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <limits>
#include <map>
#include <unistd.h>

namespace sordin {
namespace {

struct Member {
    QString path;
    QString interface;
    QString name;
    QStringList types;  ///< types of the arguments
};

class DbusFuzzTest : public BusTest {
protected:
    DbusFuzzTest() {
        using Kind = StatusMenuEntry::Kind;
        item.setHandlers({[this](QPoint, const QString&) { ++clicks; }, [this] { ++toggles; }});
        item.setMenu({{Kind::action, "Open", true, false, [this](auto&) { ++chosen; }},
                      {Kind::separator, {}, true, false, {}},
                      {Kind::toggle, "On", true, true, {}}});
        for (const char* path : {StatusNotifierItem::path, DbusMenu::path, ApplicationService::path}) {
            learn(path);
        }
    }
    ~DbusFuzzTest() override { ::close(null); }
    Q_DISABLE_COPY_MOVE(DbusFuzzTest)

    /// Reads the members from the introspection of an object.
    void learn(const char* path) {
        const auto answer = ask(path, "org.freedesktop.DBus.Introspectable", "Introspect");
        QXmlStreamReader reader(answer.arguments().value(0).toString());
        QString interface;
        while (!reader.atEnd()) {
            if (reader.readNext() != QXmlStreamReader::StartElement) {
                continue;
            }
            const auto attributes = reader.attributes();
            const QString name = attributes.value("name").toString();
            const QString element = reader.name().toString();
            if (element == "interface") {
                interface = name;
            } else if (element == "method") {
                methods.push_back({path, interface, name, {}});
            } else if (element == "property") {
                properties.push_back({path, interface, name, {}});
            } else if (element == "arg" && attributes.value("direction").toString() == "in") {
                methods.back().types.append(attributes.value("type").toString());
            }
            if (!name.isEmpty()) {
                words.append(name);
            }
        }
    }

    unsigned below(std::size_t end) { return static_cast<unsigned>(random() % end); }
    bool onceIn(unsigned times) { return below(times) == 0; }
    template <class List>
    auto anyOf(const List& list) {
        return list[static_cast<typename List::size_type>(below(static_cast<std::size_t>(list.size())))];
    }

    QString text() {
        if (!onceIn(3)) {
            return anyOf(words);
        }
        QString text;
        constexpr unsigned huge = 300'000;
        for (unsigned length = onceIn(200) ? huge : below(40); length > 0; --length) {
            text.append(QChar(static_cast<ushort>(1 + below(onceIn(4) ? 0xFFFE : 0x7E))));
        }
        return text;
    }
    int number() { return onceIn(2) ? static_cast<int>(below(8)) - 2 : static_cast<int>(random()); }
    QVariantMap map(int depth) {
        QVariantMap map;
        for (unsigned size = below(5); size > 0; --size) {
            map.insert(onceIn(2) ? QString("activation-token") : text(), anything(depth - 1));
        }
        return map;
    }
    QVariantList list(int depth) {
        QVariantList list;
        for (unsigned size = below(5); size > 0; --size) {
            list.append(anything(depth - 1));
        }
        return list;
    }
    QVariant wrapped(const QVariant& value, unsigned times = 1) {
        return times == 0 ? value : QVariant::fromValue(QDBusVariant(wrapped(value, times - 1)));
    }
    QVariant anything(int depth = 3) {
        using Limits = std::numeric_limits<double>;
        constexpr std::size_t nested = 4;  // this many types are containers
        const std::vector<std::function<QVariant()>> makers{
            [&] { return map(depth); },
            [&] { return list(depth); },
            [&] { return wrapped(anything(0), below(50)); },
            [&] { return wrapped(anything(depth - 1)); },
            [&] { return onceIn(2); },
            [&] { return number(); },
            [&] { return static_cast<unsigned>(random()); },
            [&] { return QVariant::fromValue(static_cast<uchar>(random())); },
            [&] { return QVariant::fromValue(static_cast<short>(random())); },
            [&] { return static_cast<qlonglong>(random()) << 31; },
            [&] {
                return anyOf(
                    std::vector<double>{0, -1.5, Limits::quiet_NaN(), Limits::infinity(), Limits::max()});
            },
            [&] { return text(); },
            [&] { return QVariant::fromValue(QDBusObjectPath(anyOf(methods).path)); },
            [&] { return QVariant::fromValue(QDBusSignature("a{s(iv)}")); },
            [&] {
                return QStringList{text(), text()};
            },
            [&] { return text().toUtf8(); },
            [&] { return QVariant::fromValue(QDBusUnixFileDescriptor(null)); }};
        const std::size_t first = depth > 0 ? 0 : nested;
        return makers[first + below(makers.size() - first)]();
    }
    /// A random value of a type that the program accepts.
    QVariant ofType(const QString& type) {
        const std::map<QString, std::function<QVariant()>> makers{
            {"s", [&] { return text(); }},
            {"i", [&] { return number(); }},
            {"u", [&] { return static_cast<unsigned>(random()); }},
            {"v", [&] { return wrapped(anything()); }},
            {"as",
             [&] {
                 return QStringList{text(), text()};
             }},
            {"ai",
             [&] {
                 return QVariant::fromValue(QList<int>{number(), number(), number()});
             }},
            {"av", [&] { return list(3); }},
            {"a{sv}", [&] { return map(3); }},
            {"a(isvu)", [&] {
                 const QString what = onceIn(2) ? QString("clicked") : text();
                 return QVariant::fromValue(QList<MenuEvent>{{number(), what, QDBusVariant(anything()), 0},
                                                             {number(), what, QDBusVariant(7), 1}});
             }}};
        const auto maker = makers.find(type);
        if (maker == makers.end()) {
            ADD_FAILURE() << "no generator for the type " << type.toStdString();
            return {};
        }
        return maker->second();
    }

    /// A call of a random method, sometimes with a wrong name or wrong arguments.
    QDBusMessage call() {
        Member method = anyOf(methods);
        QVariantList arguments;
        for (const QString& type : method.types) {
            arguments.append(onceIn(10) ? anything() : ofType(type));
        }
        const std::vector<std::function<void()>> twists{
            [&] { method.name = anyOf(words).section('.', -1); },
            [&] { method.interface = anyOf(methods).interface; },
            [&] { method.interface.clear(); },
            [&] {
                method.path = anyOf(std::vector<QString>{"/", "/org/sordin", method.path + "/0"});
            },
            [&] { arguments.append(anything()); },
            [&] { arguments = arguments.mid(1); }};
        if (onceIn(2)) {
            anyOf(twists)();
        }
        return question(program.baseService(), method.path, method.interface, method.name, arguments);
    }
    QDBusMessage write() {
        const Member property = anyOf(properties);
        return question(
            program.baseService(), property.path, "org.freedesktop.DBus.Properties", "Set",
            {property.interface, property.name, wrapped(onceIn(4) ? QVariant(onceIn(2)) : anything())});
    }
    /// A signal that seems to come from a service to which the program listens.
    QDBusMessage news() {
        auto message = QDBusMessage::createTargetedSignal(
            program.baseService(), onceIn(2) ? "/StatusNotifierWatcher" : "/org/freedesktop/DBus",
            onceIn(2) ? "org.kde.StatusNotifierWatcher" : "org.freedesktop.DBus",
            onceIn(2) ? "StatusNotifierHostRegistered" : "NameOwnerChanged");
        message.setArguments(list(3));
        return message;
    }
    /// Sends many calls at once. Each must get an answer unless its sender does not expect one.
    void sendSome() {
        constexpr int some = 50;
        std::vector<std::pair<QDBusMessage, QDBusPendingCall>> calls;
        for (int i = 0; i < some; ++i) {
            const QDBusMessage message = onceIn(4) ? write() : call();
            if (onceIn(10)) {
                desktop.send(onceIn(2) ? news() : message);
            } else {
                calls.emplace_back(message, desktop.asyncCall(message));
            }
        }
        for (const auto& [message, call] : calls) {
            ASSERT_TRUE(comes([&each = call] { return each.isFinished(); }))
                << message.member().toStdString() << " of " << message.path().toStdString()
                << " is not answered: " << message.signature().toStdString();
            const QString error = call.reply().errorName();
            ASSERT_FALSE(error.endsWith("NoReply") || error.endsWith("Disconnected")) << error.toStdString();
        }
    }
    [[nodiscard]] static std::ptrdiff_t openFiles() {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    }

    std::mt19937 random = seededRandom();
    const int null = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    int clicks = 0;
    int toggles = 0;
    int chosen = 0;
    int activations = 0;
    int restores = 0;
    int writes = 0;
    bool enabled = true;
    StatusNotifierItem item{program, "/icons"};
    ApplicationService service{program, [this](const QString&) { ++activations; }};
    ControlInterface control{service,
                             {[this] {
                                  return ControlInterface::State{"ad",    "Ad", enabled, true,    true,
                                                                 "Radio", 0.5,  false,   "Phone", {"a"}};
                              },
                              [this](bool value) {
                                  enabled = value;
                                  ++writes;
                                  control.stateChanged();
                              },
                              [this] { ++restores; }, [this](bool /*tuned*/) { ++writes; },
                              [this](const QStringList& /*ids*/) { ++writes; }}};
    std::vector<Member> methods;
    std::vector<Member> properties;
    QStringList words;
};

TEST_F(DbusFuzzTest, EveryCallIsAnsweredAndNoneDoesHarm) {
    const char* factor = std::getenv("SORDIN_FUZZ_FACTOR");
    const int rounds = 100 * (factor != nullptr ? std::atoi(factor) : 1);
    constexpr auto itemInterface = "org.kde.StatusNotifierItem";
    const auto files = openFiles();
    for (int round = 0; round < rounds && !HasFatalFailure(); ++round) {
        sendSome();
        ASSERT_EQ(property(ApplicationService::path, ControlInterface::name, "Status"), "ad");
        ASSERT_EQ(property(StatusNotifierItem::path, itemInterface, "Title"), "Sordin");
        ASSERT_EQ(property(DbusMenu::path, "com.canonical.dbusmenu", "Version"), 3U);
    }
    EXPECT_TRUE(comes([&] { return openFiles() <= files; })) << "passed file descriptors must be closed";
    for (const int reached : {clicks, toggles, chosen, activations, restores, writes}) {
        EXPECT_GT(reached, 0) << "some calls must reach the program";
    }
}

}  // namespace
}  // namespace sordin
