// SPDX-License-Identifier: MIT
// Calls of every sort to everything that the program has on the bus. What is no message at all the bus itself
// keeps from it; all else may come.
#include "bus_fixture.h"
#include "platform/linux/session/control_interface.h"
#include "platform/linux/session/status_notifier_item.h"
#include "random_seed.h"

#include <QDBusMetaType>
#include <QDBusUnixFileDescriptor>
#include <QXmlStreamReader>
#include <fcntl.h>
#include <filesystem>
#include <limits>
#include <unistd.h>

namespace sordin {
namespace {

struct Member {
    QString path;
    QString interface;
    QString name;
    QStringList types;  ///< of what a method takes
};

class DbusFuzzTest : public BusTest {
protected:
    DbusFuzzTest() {
        using Kind = StatusMenuEntry::Kind;
        item.setHandlers({[this](QPoint, const QString&) { ++clicks; }, [this] { ++toggles; }});
        item.setMenu({{Kind::action, "Open", true, false, [this] { ++chosen; }},
                      {Kind::separator, {}, true, false, {}},
                      {Kind::toggle, "On", true, true, {}}});
        for (const char* path : {StatusNotifierItem::path, DbusMenu::path, ApplicationService::path}) {
            learn(path);
        }
    }
    ~DbusFuzzTest() override { ::close(null); }
    Q_DISABLE_COPY_MOVE(DbusFuzzTest)

    /// What there is to be called, as the program says it itself.
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
    QVariant deep() {
        QVariant value = anything(0);
        for (unsigned depth = below(50); depth > 0; --depth) {
            value = QVariant::fromValue(QDBusVariant(value));
        }
        return value;
    }
    QVariant anything(int depth = 3) {
        using Limits = std::numeric_limits<double>;
        constexpr unsigned flat = 13;
        switch (below(depth > 0 ? flat + 4 : flat)) {
        case 0:
            return onceIn(2);
        case 1:
            return number();
        case 2:
            return static_cast<unsigned>(random());
        case 3:
            return QVariant::fromValue(static_cast<uchar>(random()));
        case 4:
            return QVariant::fromValue(static_cast<short>(random()));
        case 5:
            return static_cast<qlonglong>(random()) << 31;
        case 6:
            return anyOf(
                std::vector<double>{0, -1.5, Limits::quiet_NaN(), Limits::infinity(), Limits::max()});
        case 7:
            return text();
        case 8:
            return QVariant::fromValue(QDBusObjectPath(anyOf(methods).path));
        case 9:
            return QVariant::fromValue(QDBusSignature("a{s(iv)}"));
        case 10:
            return QStringList{text(), text()};
        case 11:
            return text().toUtf8();
        case 12:
            return QVariant::fromValue(QDBusUnixFileDescriptor(null));
        case flat:
            return map(depth);
        case flat + 1:
            return list(depth);
        case flat + 2:
            return deep();
        default:
            return QVariant::fromValue(QDBusVariant(anything(depth - 1)));
        }
    }
    /// Of a type that the program takes.
    QVariant ofType(const QString& type) {
        if (type == "s") {
            return text();
        }
        if (type == "i") {
            return number();
        }
        if (type == "u") {
            return static_cast<unsigned>(random());
        }
        if (type == "v") {
            return QVariant::fromValue(QDBusVariant(anything()));
        }
        if (type == "as") {
            return QStringList{text(), text()};
        }
        if (type == "ai") {
            return QVariant::fromValue(QList<int>{number(), number(), number()});
        }
        if (type == "av") {
            return list(3);
        }
        if (type == "a{sv}") {
            return map(3);
        }
        if (type == "a(isvu)") {
            const QString what = onceIn(2) ? QString("clicked") : text();
            return QVariant::fromValue(QList<MenuEvent>{{number(), what, QDBusVariant(anything()), 0},
                                                        {number(), what, QDBusVariant(7), 1}});
        }
        ADD_FAILURE() << "nothing is made for " << type.toStdString();
        return {};
    }

    /// A method with what it takes; sometimes it is another method, or takes something else.
    QDBusMessage call() {
        Member method = anyOf(methods);
        QVariantList arguments;
        for (const QString& type : method.types) {
            arguments.append(onceIn(10) ? anything() : ofType(type));
        }
        switch (below(12)) {
        case 0:
            method.name = anyOf(words).section('.', -1);
            break;
        case 1:
            method.interface = anyOf(methods).interface;
            break;
        case 2:
            method.interface.clear();
            break;
        case 3:
            method.path = anyOf(std::vector<QString>{"/", "/org/sordin", method.path + "/0"});
            break;
        case 4:
            arguments.append(anything());
            break;
        case 5:
            arguments = arguments.mid(1);
            break;
        default:
            break;
        }
        auto message =
            QDBusMessage::createMethodCall(program.baseService(), method.path, method.interface, method.name);
        message.setArguments(arguments);
        return message;
    }
    QDBusMessage write() {
        const Member property = anyOf(properties);
        auto message = QDBusMessage::createMethodCall(program.baseService(), property.path,
                                                      "org.freedesktop.DBus.Properties", "Set");
        message.setArguments(
            {property.interface, property.name, QVariant::fromValue(QDBusVariant(anything()))});
        return message;
    }
    /// As if it came from those whom the program listens to.
    QDBusMessage news() {
        auto message = QDBusMessage::createTargetedSignal(
            program.baseService(), onceIn(2) ? "/StatusNotifierWatcher" : "/org/freedesktop/DBus",
            onceIn(2) ? "org.kde.StatusNotifierWatcher" : "org.freedesktop.DBus",
            onceIn(2) ? "StatusNotifierHostRegistered" : "NameOwnerChanged");
        message.setArguments(list(3));
        return message;
    }
    /// Many at a time; each has to be answered, but for those whose sender does not want it.
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
    ControlInterface control{
        service,
        {[this] { return ControlInterface::State{"ad", "Ad", enabled, true, true, "Radio", 0.5}; },
         [this](bool value) {
             enabled = value;
             ++writes;
             control.stateChanged();
         },
         [this] { ++restores; }}};
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
        ASSERT_EQ(property(ApplicationService::path, ControlInterface::name, "Enabled"), QVariant(enabled));
        ASSERT_EQ(property(StatusNotifierItem::path, itemInterface, "Title"), "Sordin");
        ASSERT_EQ(property(DbusMenu::path, "com.canonical.dbusmenu", "Version"), 3U);
    }
    EXPECT_TRUE(comes([&] { return openFiles() <= files; })) << "nothing that is passed stays open";
    for (const int reached : {clicks, toggles, chosen, activations, restores, writes}) {
        EXPECT_GT(reached, 0) << "it gets as far as what the program does";
    }
}

}  // namespace
}  // namespace sordin
