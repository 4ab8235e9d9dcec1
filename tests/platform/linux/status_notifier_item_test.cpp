// SPDX-License-Identifier: MIT
// The icon and its menu as a panel sees them.
#include "bus_fixture.h"
#include "fake_panel.h"
#include "platform/linux/session/status_notifier_item.h"

#include <QDBusArgument>

namespace sordin {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto itemPath = StatusNotifierItem::path;
constexpr auto itemInterface = "org.kde.StatusNotifierItem";
constexpr auto menuPath = DbusMenu::path;
constexpr auto menuInterface = "com.canonical.dbusmenu";

class StatusNotifierItemTest : public BusTest {
protected:
    StatusNotifierItemTest() : item(program, "/icons") {
        item.setHandlers({[this](QPoint at, const QString& token) { clicks.emplace_back(at, token); },
                          [this] { ++toggles; }});
    }

    [[nodiscard]] MenuLayout layout(int parent = 0, int depth = -1, const QStringList& names = {}) const {
        const auto answer = ask(menuPath, menuInterface, "GetLayout", {parent, depth, names});
        return qdbus_cast<MenuLayout>(answer.arguments().value(1));
    }
    [[nodiscard]] static std::vector<MenuLayout> children(const MenuLayout& layout) {
        std::vector<MenuLayout> entries;
        for (const QVariant& child : layout.children) {
            entries.push_back(qdbus_cast<MenuLayout>(child));
        }
        return entries;
    }
    void click(int id, const char* what = "clicked") {
        static_cast<void>(
            ask(menuPath, menuInterface, "Event", {id, what, QVariant::fromValue(QDBusVariant(0)), 0U}));
    }

    StatusNotifierItem item;
    std::vector<std::pair<QPoint, QString>> clicks;
    int toggles = 0;
};

TEST_F(StatusNotifierItemTest, SaysWhatAPanelShows) {
    item.setSymbol("waveform");
    item.setText("Listening");
    const auto is = [this](const char* name) { return property(itemPath, itemInterface, name); };
    EXPECT_EQ(is("Category"), "ApplicationStatus");
    EXPECT_EQ(is("Id"), "sordin");
    EXPECT_EQ(is("Title"), "Sordin");
    EXPECT_EQ(is("Status"), "Active");
    EXPECT_EQ(is("IconName"), "org.sordin.Sordin-listening-symbolic");
    EXPECT_EQ(is("IconThemePath"), "/icons");
    EXPECT_EQ(is("IconAccessibleDesc"), "Sordin: Listening");
    EXPECT_EQ(is("ItemIsMenu"), false);
    EXPECT_EQ(is("Menu").value<QDBusObjectPath>().path(), menuPath);
    const auto tip = qdbus_cast<StatusToolTip>(is("ToolTip"));
    EXPECT_EQ(tip.title, "Sordin");
    EXPECT_EQ(tip.text, "Listening");

    FakePanel panel(desktop);
    ASSERT_TRUE(comes([&] { return item.isShown(); }));
    item.setSymbol("speaker.zzz");
    EXPECT_TRUE(comes([&] { return panel.iconChanges() == 1; }));
    item.setText("Paused");
    EXPECT_TRUE(comes([&] { return panel.tipChanges() == 1 && panel.description() == "Sordin: Paused"; }));
    item.setSymbol("speaker.zzz");
    item.setSymbol("speaker.slash.fill");
    EXPECT_TRUE(comes([&] { return panel.iconChanges() == 2; })) << "one signal per change";
    EXPECT_EQ(is("IconName"), "org.sordin.Sordin-muting-symbolic");
}

TEST_F(StatusNotifierItemTest, IsDrawnAnewInTheColoursOfAnotherScheme) {
    ASSERT_TRUE(desktop.registerService("org.freedesktop.portal.Desktop"));
    FakePanel panel(desktop);
    ASSERT_TRUE(comes([&] { return item.isShown(); }));
    for (const char* key : {"contrast", "color-scheme"}) {
        desktop.send(QDBusMessage::createSignal("/org/freedesktop/portal/desktop",
                                                "org.freedesktop.portal.Settings", "SettingChanged")
                     << "org.freedesktop.appearance" << key << QVariant::fromValue(QDBusVariant(1U)));
    }
    ASSERT_TRUE(comes([&] { return panel.iconChanges() > 0; }));
    EXPECT_EQ(panel.iconChanges(), 1);
}

TEST_F(StatusNotifierItemTest, TellsWhereItWasClickedWithTheLeaveToComeToTheFront) {
    static_cast<void>(ask(itemPath, itemInterface, "ProvideXdgActivationToken", {"token"}));
    static_cast<void>(ask(itemPath, itemInterface, "Activate", {30, 700}));
    static_cast<void>(ask(itemPath, itemInterface, "ContextMenu", {31, 701}));
    EXPECT_THAT(clicks, ElementsAre(std::pair(QPoint(30, 700), "token"), std::pair(QPoint(31, 701), "")));
    static_cast<void>(ask(itemPath, itemInterface, "SecondaryActivate", {30, 700}));
    static_cast<void>(ask(itemPath, itemInterface, "XAyatanaSecondaryActivate", {0U}));
    EXPECT_EQ(toggles, 2);
    EXPECT_EQ(ask(itemPath, itemInterface, "Scroll", {120, "vertical"}).type(), QDBusMessage::ReplyMessage);
    EXPECT_EQ(clicks.size(), 2U);
}

TEST_F(StatusNotifierItemTest, IsShownByPanelsThatComeAndGo) {
    EXPECT_FALSE(item.isShown());
    for (int i = 0; i < 3; ++i) {
        FakePanel panel(desktop);
        EXPECT_TRUE(comes([&] { return item.isShown(); }));
        EXPECT_THAT(panel.items(), ElementsAre(program.baseService()));
        panel.setShows(false);
        EXPECT_TRUE(comes([&] { return !item.isShown(); })) << "a watcher without a panel shows no icon";
        panel.setShows(true);
        EXPECT_TRUE(comes([&] { return item.isShown(); }));
        panel.leave();
        EXPECT_TRUE(comes([&] { return !item.isShown(); }));
    }
}

TEST_F(StatusNotifierItemTest, TheMenuSaysWhatCanBeDoneAndDoesIt) {
    using Kind = StatusMenuEntry::Kind;
    int done = 0;
    std::vector<QString> tokens;
    const auto doIt = [&](const QString& token) {
        ++done;
        tokens.push_back(token);
    };
    const std::vector<StatusMenuEntry> entries{{Kind::action, "a_b", false, false, doIt},
                                               {Kind::separator, {}, true, false, {}},
                                               {Kind::toggle, "On", true, true, doIt},
                                               {Kind::action, "Nothing", true, false, {}}};
    item.setMenu(entries);
    EXPECT_EQ(property(menuPath, menuInterface, "Version"), 3U);
    const auto shown = children(layout());
    ASSERT_EQ(shown.size(), 4U);
    EXPECT_EQ(shown[0].properties.value("label"), "a__b") << "the underscore does not mark a key";
    EXPECT_EQ(shown[0].properties.value("enabled"), false);
    EXPECT_EQ(shown[1].properties.value("type"), "separator");
    EXPECT_EQ(shown[2].properties.value("toggle-type"), "checkmark");
    EXPECT_EQ(shown[2].properties.value("toggle-state"), 1);
    EXPECT_THAT(children(layout(0, 0)), IsEmpty());
    EXPECT_THAT(children(layout(0, 1, {"label"}))[2].properties.keys(), ElementsAre("label"));
    EXPECT_EQ(layout(3).properties.value("label"), "On");
    EXPECT_THAT(layout(17).properties, IsEmpty());

    static_cast<void>(ask(itemPath, itemInterface, "ProvideXdgActivationToken", {"token"}));
    click(3);
    EXPECT_EQ(done, 1);
    click(3, "hovered");
    click(1);  // a disabled entry
    for (const int id : {0, 2, 4, 5, -1, std::numeric_limits<int>::min()}) {
        click(id);
    }
    EXPECT_EQ(done, 1);
    const auto group = ask(menuPath, menuInterface, "EventGroup",
                           {QVariant::fromValue(QList<MenuEvent>{{3, "clicked", QDBusVariant(0), 0},
                                                                 {9, "clicked", QDBusVariant(0), 0}})});
    EXPECT_EQ(done, 2);
    EXPECT_THAT(tokens, ElementsAre("token", "")) << "a token is valid for one click";
    EXPECT_THAT(qdbus_cast<QList<int>>(group.arguments().value(0)), ElementsAre(9));
    const auto group3 = ask(menuPath, menuInterface, "GetGroupProperties",
                            {QVariant::fromValue(QList<int>{3, 9}), QStringList()});
    const auto group3Properties = qdbus_cast<QList<MenuProperties>>(group3.arguments().value(0));
    ASSERT_EQ(group3Properties.size(), 1);
    EXPECT_EQ(group3Properties[0].properties, shown[2].properties);
    for (const int id : {3, 9}) {
        EXPECT_EQ(ask(menuPath, menuInterface, "GetProperty", {id, "label"}).type(),
                  QDBusMessage::ReplyMessage);
    }
}

TEST_F(StatusNotifierItemTest, TheMenuTellsWhatChanges) {
    using Kind = StatusMenuEntry::Kind;
    MenuEar ear(desktop, program.baseService());
    std::vector<StatusMenuEntry> entries{{Kind::action, "Open", true, false, {}},
                                         {Kind::toggle, "On", true, true, {}}};
    item.setMenu(entries);
    ASSERT_TRUE(comes([&] { return ear.revisions.size() == 1; })) << "other entries";
    item.setMenu(entries);
    entries[1].checked = false;
    item.setMenu(entries);
    ASSERT_TRUE(comes([&] { return ear.updates.size() == 1; }));
    EXPECT_THAT(ear.updates[0], ElementsAre(std::pair(2, 0)));
    EXPECT_EQ(ear.revisions.size(), 1U) << "unchanged entries send no signal";
    entries.pop_back();
    item.setMenu(entries);
    ASSERT_TRUE(comes([&] { return ear.revisions.size() == 2; }));
    EXPECT_GT(ear.revisions[1], ear.revisions[0]);
    click(1);  // an entry without an action
}

}  // namespace
}  // namespace sordin
