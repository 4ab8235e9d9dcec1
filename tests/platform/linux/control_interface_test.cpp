// SPDX-License-Identifier: MIT
// The D-Bus interface, compared with its installed description.
#include "bus_fixture.h"
#include "platform/linux/session/control_interface.h"
#include "platform/linux/session/running_program.h"
#include "platform/linux/session/status_report.h"
#include "property_ear.h"

#include <QDBusMetaType>
#include <QFile>
#include <QThread>
#include <QXmlStreamReader>
#include <map>

namespace sordin {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr auto objectPath = ApplicationService::path;
constexpr auto controlName = ControlInterface::name;
constexpr auto properties = "org.freedesktop.DBus.Properties";

/// The members of an interface with types and access: "property Enabled b readwrite", "method Toggle out b".
std::map<QString, QString> membersIn(const QString& xml) {
    std::map<QString, QString> members;
    QXmlStreamReader reader(xml);
    bool inside = false;
    QString member;
    while (!reader.atEnd()) {
        const auto token = reader.readNext();
        const QString element = reader.name().toString();
        if (token == QXmlStreamReader::EndElement && element == "interface") {
            inside = false;
        } else if (token == QXmlStreamReader::StartElement) {
            const auto attribute = [&reader](const char* name) {
                return reader.attributes().value(QLatin1String(name)).toString();
            };
            if (element == "interface") {
                inside = attribute("name") == QLatin1String(controlName);
            } else if (inside && element == "property") {
                member = attribute("name");
                members[member] = "property " + attribute("type") + ' ' + attribute("access");
            } else if (inside && (element == "method" || element == "signal")) {
                member = attribute("name");
                members[member] = element;
            } else if (inside) {  // an argument or an annotation
                members[member] += ' ' + attribute("direction") + attribute("type") + attribute("value");
            }
        }
    }
    EXPECT_FALSE(reader.hasError()) << reader.errorString().toStdString();
    return members;
}

class ControlInterfaceTest : public BusTest {
protected:
    [[nodiscard]] QVariant is(const char* name) const { return property(objectPath, controlName, name); }
    /// The last part of the error name; empty if there is no error.
    [[nodiscard]] QString errorOf(const QDBusMessage& answer) const {
        return answer.errorName().section('.', -1);
    }
    [[nodiscard]] QString write(const char* name, const QVariant& value) const {
        return errorOf(ask(objectPath, properties, "Set",
                           {controlName, name, QVariant::fromValue(QDBusVariant(value))}));
    }
    [[nodiscard]] QString call(const char* method, const QVariantList& arguments = {}) const {
        return errorOf(ask(objectPath, controlName, method, arguments));
    }
    [[nodiscard]] QString introspection() const {
        return ask(objectPath, "org.freedesktop.DBus.Introspectable", "Introspect")
            .arguments()
            .value(0)
            .toString();
    }

    ControlInterface::State state{"listening", "Listening", true, false, false, {}, 0.25, false, {}, {}};
    int restores = 0;
    std::vector<bool> writes;
    ApplicationService service{program, [](const QString&) {}, true};
    const ControlInterface::Program parts{
        [this] { return state; },
        [this](bool enabled) {
            writes.push_back(enabled);
            state.enabled = enabled;
            if (control) {
                control->stateChanged();
            }
        },
        [this] { ++restores; }, [this](bool tuned) { state.tunedDetection = tuned; },
        [this](const QStringList& ids) { state.ignoredApplications = ids; }};
    std::optional<ControlInterface> control{std::in_place, service, parts, std::chrono::milliseconds(1)};
};

TEST_F(ControlInterfaceTest, IsWhatItsDescriptionSays) {
    QFile file(SORDIN_INTERFACE);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const auto described = membersIn(QString::fromUtf8(file.readAll()));
    ASSERT_THAT(described, SizeIs(12));
    EXPECT_EQ(membersIn(introspection()), described);

    // The answers must match the description.
    auto answer = ask(objectPath, properties, "GetAll", {controlName});
    auto all = qdbus_cast<QVariantMap>(answer.arguments().value(0));
    for (const auto& [name, member] : described) {
        const auto text = name.toStdString();
        if (member.startsWith("property")) {
            const QVariant value = is(text.c_str());
            EXPECT_EQ(all.take(name), value) << text;
            EXPECT_EQ(QDBusMetaType::typeToSignature(value.metaType()), member.section(' ', 1, 1)) << text;
            EXPECT_EQ(write(text.c_str(), value),
                      member.section(' ', 2, 2) == "readwrite" ? "" : "PropertyReadOnly")
                << text;
            EXPECT_EQ(call(text.c_str()), "UnknownMethod");
        } else {
            answer = ask(objectPath, controlName, text.c_str());
            EXPECT_EQ(answer.type(), QDBusMessage::ReplyMessage) << text;
            EXPECT_EQ(answer.signature(), member.section(" out", 1)) << text;
        }
    }
    EXPECT_THAT(all, IsEmpty()) << all.keys().value(0).toStdString();
}

TEST_F(ControlInterfaceTest, IsDrivenByScripts) {
    EXPECT_EQ(write("Enabled", false), "");
    EXPECT_EQ(is("Enabled"), false);
    EXPECT_EQ(ask(objectPath, controlName, "Toggle").arguments(), QVariantList{true});
    EXPECT_TRUE(comes([&] { return writes == std::vector{false, true}; }));
    control.emplace(service, parts, std::chrono::hours(1));
    for (const bool answered : {false, true, false, true, false, true, false}) {
        EXPECT_EQ(ask(objectPath, "", "Toggle").arguments(), QVariantList{answered})
            << "without an interface name";
        EXPECT_EQ(is("Enabled"), answered);
    }
    EXPECT_EQ(write("Enabled", true), "");
    EXPECT_THAT(writes, ElementsAre(false, true, false)) << "rapid switches are combined";
    control.emplace(service, parts);
    EXPECT_THAT(writes, ElementsAre(false, true, false, true)) << "the last switch counts";
    EXPECT_EQ(write("TunedDetection", true), "");
    EXPECT_EQ(is("TunedDetection"), true);
    EXPECT_EQ(write("IgnoredApplications", QStringList{"a", "b"}), "");
    EXPECT_EQ(is("IgnoredApplications"), QStringList({"a", "b"}));
    EXPECT_EQ(call("RestoreNow"), "");
    EXPECT_EQ(restores, 1);
    state.confidence = 0.75;
    EXPECT_EQ(is("Confidence"), 0.75);

    // The program that sends the request runs in another process. Here, another thread waits for the answer.
    const auto callRunning = [&] {
        std::optional<QString> problem;
        const std::unique_ptr<QThread> thread(
            QThread::create([&] { problem = callRunningProgram(desktop, "RestoreNow"); }));
        thread->start();
        comes([&] { return thread->isFinished(); });
        return problem.value_or("");
    };
    EXPECT_EQ(callRunning(), "");
    EXPECT_EQ(restores, 2);
    control.reset();
    EXPECT_TRUE(callRunning().startsWith("does not respond")) << callRunning().toStdString();
    program.unregisterService(ApplicationService::id);
    EXPECT_EQ(callRunning(), "is not running");
    EXPECT_TRUE(callRunningProgram(QDBusConnection("none"), "RestoreNow").has_value());
}

TEST_F(ControlInterfaceTest, IsReportedToPanelsAndScripts) {
    std::vector<std::string> lines;
    const StatusFollower follower(
        desktop, ReportFormat::line, [&](const QByteArray& line) { lines.push_back(line.toStdString()); },
        [] {});
    const auto reported = [&](const std::string& wanted) {
        const bool so = comes([&] { return !lines.empty(); }) && lines == std::vector{wanted};
        return (so ? testing::AssertionSuccess() : testing::AssertionFailure())
               << testing::PrintToString(std::exchange(lines, {}));
    };
    EXPECT_TRUE(reported("Listening, 25 %"));
    state.confidence = 0.875;
    control->stateChanged();
    state.tunedDetection = true;  // not part of the report
    control->stateChanged();
    static_cast<void>(is("Status"));
    state.statusText = "Ad detected, muted";
    state.status = "ad";
    state.adActive = state.faded = true;
    state.source = "Radio & \"Co\"";
    control->stateChanged();
    EXPECT_TRUE(reported("Ad detected, muted: Radio & \"Co\", 87 %"));
    const auto all = [this] {
        return qdbus_cast<QVariantMap>(
            ask(objectPath, properties, "GetAll", {controlName}).arguments().value(0));
    };
    EXPECT_EQ(
        statusReport(all(), ReportFormat::json).toStdString(),
        R"({"ad":true,"alt":"ad","application":"Radio & \"Co\"","call":"","class":"ad","confidence":0.875,)"
        R"("faded":true,"percentage":87,"status":"ad","text":"Ad detected, muted",)"
        R"("tooltip":"Ad detected, muted: Radio & \"Co\", 87 %"})");
    state = {"listening", "Listening", true, false, false, {}, 0, false, "Phone", {}};
    control->stateChanged();
    EXPECT_TRUE(reported("Listening. A call is on: Phone"));
    EXPECT_THAT(statusReport(all(), ReportFormat::json).toStdString(),
                testing::AllOf(testing::HasSubstr(R"("call":"Phone")"),
                               testing::HasSubstr(R"("class":"call")"),
                               testing::HasSubstr(R"("status":"listening")")));
    program.unregisterService(ApplicationService::id);
    EXPECT_TRUE(reported("Not running"));
    program.registerService(ApplicationService::id);
    EXPECT_TRUE(reported("Listening. A call is on: Phone"));
}

TEST_F(ControlInterfaceTest, TheDesktopsActionsAreDone) {
    const auto act = [this](const char* action) {
        static_cast<void>(ask(objectPath, "org.freedesktop.Application", "ActivateAction",
                              {action, QVariantList(), QVariantMap()}));
    };
    act("ToggleEnabled");
    EXPECT_THAT(writes, ElementsAre(true))
        << "starting the program through the action must not switch it off";
    act("ToggleEnabled");
    EXPECT_TRUE(comes([&] { return writes == std::vector{true, false}; }));
    act("RestoreVolume");
    EXPECT_EQ(restores, 1);
}

TEST_F(ControlInterfaceTest, TellsWhatChangesOnceAndNothingElse) {
    PropertyEar ear(desktop, program.baseService(), objectPath);
    EXPECT_EQ(write("Enabled", true), "") << "no change; registers the listener with the bus";
    state.status = "ad";
    control->stateChanged();
    state.adActive = true;
    state.source = "Radio";
    state.confidence = 0.9;
    control->stateChanged();
    ASSERT_TRUE(comes([&] { return !ear.changes.empty(); }));
    EXPECT_EQ(ear.changes[0], (QVariantMap{{"Status", "ad"}, {"AdActive", true}, {"Source", "Radio"}}));
    state.confidence = 0.8;
    control->stateChanged();
    static_cast<void>(is("Confidence"));
    state.source.clear();
    control->stateChanged();
    ASSERT_TRUE(comes([&] { return ear.changes.size() > 1; }));
    EXPECT_EQ(ear.changes[1], (QVariantMap{{"Source", ""}})) << "the confidence sends no signal";
}

TEST_F(ControlInterfaceTest, RefusesWhatIsWrong) {
    for (const QVariant& value : {QVariant(1), QVariant("false"), QVariant(0.5), QVariant(QStringList("b")),
                                  QVariant::fromValue(QDBusVariant(false))}) {
        EXPECT_EQ(write("Enabled", value), "InvalidArgs") << value.typeName();
    }
    EXPECT_EQ(write("Nothing", true), "UnknownProperty");
    EXPECT_EQ(errorOf(ask(objectPath, properties, "Set", {controlName, "Enabled", false})), "InvalidArgs");
    EXPECT_EQ(errorOf(ask(objectPath, properties, "Get", {controlName, "Nothing"})), "UnknownProperty");
    EXPECT_EQ(errorOf(ask(objectPath, properties, "Get", {controlName})), "InvalidArgs");
    EXPECT_EQ(errorOf(ask(objectPath, properties, "Get", {"org.sordin.Sordin2", "Enabled"})),
              "UnknownInterface");
    EXPECT_EQ(errorOf(ask(objectPath, properties, "Delete", {controlName})), "UnknownMethod");
    EXPECT_EQ(call("RestoreNow", {true}), "InvalidArgs");
    EXPECT_EQ(call("restoreNow"), "UnknownMethod");
    EXPECT_EQ(call("deleteLater"), "UnknownMethod");
    EXPECT_EQ(errorOf(ask(objectPath, "org.sordin.Sordin2", "RestoreNow")), "UnknownInterface");
    EXPECT_EQ(errorOf(ask("/org/sordin/Sordin/1", controlName, "RestoreNow")), "UnknownObject");
    EXPECT_THAT(writes, IsEmpty());
    EXPECT_EQ(restores, 0);

    control.reset();
    EXPECT_EQ(call("RestoreNow"), "UnknownInterface") << "the interface has been removed";
    EXPECT_THAT(membersIn(introspection()), IsEmpty());
}

}  // namespace
}  // namespace sordin
