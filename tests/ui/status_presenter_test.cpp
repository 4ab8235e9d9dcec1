// SPDX-License-Identifier: MIT
// The icon and its menu in all states of the engine.
#include "ui/panel_place.h"
#include "ui/status_presenter.h"
#include "ui_fixture.h"

#include <algorithm>

namespace sordin {
namespace {

using testing::ElementsAre;

struct FakeStatusItem final : StatusItem {
    void setHandlers(Handlers /*handlers*/) override {}
    void setSymbol(const QString& name) override { symbol = name; }
    void setText(const QString& said) override { text = said; }
    void setMenu(std::vector<StatusMenuEntry> entries) override { menu = std::move(entries); }
    [[nodiscard]] bool isShown() const override { return true; }

    [[nodiscard]] const StatusMenuEntry& entry(const QString& name) const {
        const auto found =
            std::find_if(menu.begin(), menu.end(), [&](const auto& each) { return each.text == name; });
        return found != menu.end() ? *found : throw std::runtime_error("there is no " + name.toStdString());
    }
    void choose(const QString& name) const {
        const auto triggered = entry(name).triggered;  // copied, because the call replaces the menu
        triggered("token");
    }

    QString symbol;
    QString text;
    std::vector<StatusMenuEntry> menu;
};

class StatusPresenterTest : public UiTest {
protected:
    FakeStatusItem item;
    bool atLogin = false;
    std::vector<std::string> chosen;
    StatusPresenter presenter{
        *engine,
        item,
        {[this](const QString& token) { chosen.push_back("panel " + token.toStdString()); },
         [this](const QString& token) { chosen.push_back("main " + token.toStdString()); },
         [this] { chosen.emplace_back("quit"); }, [this] { return atLogin; },
         [this](bool active) { atLogin = active; }}};
};

TEST_F(StatusPresenterTest, TheIconFollowsTheEngine) {
    beginListening();
    EXPECT_EQ(item.symbol, "waveform");
    EXPECT_EQ(item.text, "Listening");
    EXPECT_EQ(item.menu.front().text, "Listening");
    EXPECT_FALSE(item.menu.front().enabled) << "the status entry cannot be chosen";
    hearAdBegin();
    EXPECT_EQ(item.symbol, "speaker.slash.fill");
    EXPECT_EQ(item.text, "Ad detected, muted");
    hearAdEnd();
    streams->changed({{ApplicationStream::Kind::playsCall, "9", {}, "Phone"}});
    settle();
    pass(1);
    EXPECT_EQ(item.symbol, "waveform");
    EXPECT_EQ(item.text, "A call is on: Phone");
    EXPECT_EQ(item.menu[0].text, "Listening");
    EXPECT_EQ(item.menu[1].text, item.text);
    streams->changed({});
    settle();
    pass(1);
    engine->setTestMode(true);
    EXPECT_EQ(item.text, "Listening (test mode)");
    engine->setIsEnabled(false);
    settle();
    EXPECT_EQ(item.symbol, "speaker.zzz");
    EXPECT_EQ(item.text, "Paused");
    engine->simulate(5);
    EXPECT_EQ(item.symbol, "speaker.slash.fill") << "the icon shows the ad also while paused";
}

TEST_F(StatusPresenterTest, TheMenuReachesEverything) {
    std::vector<std::string> texts;
    for (const StatusMenuEntry& entry : item.menu) {
        texts.push_back(entry.text.toStdString());
    }
    EXPECT_THAT(texts, ElementsAre("Starting…", "", "Show Panel", "Open Sordin", "", "Enabled",
                                   "Restore Volume", "Start at Login", "", "Quit"));
    for (const auto* name : {"Show Panel", "Open Sordin", "Quit"}) {
        item.choose(name);
    }
    EXPECT_THAT(chosen, ElementsAre("panel token", "main token", "quit"));

    EXPECT_TRUE(item.entry("Enabled").checked);
    item.choose("Enabled");
    EXPECT_FALSE(engine->isEnabled());
    EXPECT_FALSE(item.entry("Enabled").checked);
    item.choose("Enabled");
    settle();
    beginListening();

    EXPECT_FALSE(item.entry("Restore Volume").enabled);
    hearAdBegin();
    ASSERT_TRUE(item.entry("Restore Volume").enabled);
    item.choose("Restore Volume");
    settle();
    EXPECT_FALSE(item.entry("Restore Volume").enabled);
    EXPECT_TRUE(engine->adActive());

    EXPECT_FALSE(item.entry("Start at Login").checked);
    item.choose("Start at Login");
    EXPECT_TRUE(atLogin);
    EXPECT_TRUE(item.entry("Start at Login").checked);
    item.choose("Start at Login");
    EXPECT_FALSE(atLogin);
}

TEST(PanelPlace, TheIconIsWhereADesktopSaysUnlessThePointerKnowsBetter) {
    const QRect screen(0, 0, 1280, 800);
    const QRect free = screen.adjusted(0, 60, 0, 0);
    struct Case {
        QPoint told;
        std::optional<QPoint> pointer;
        QPoint icon;
    };
    for (const auto& [told, pointer, icon] : {
             Case{{640, 10}, QPoint(650, 12), {640, 10}},
             Case{{640, 55}, QPoint(300, 500), {640, 55}},    // activated with the keyboard
             Case{{640, 790}, QPoint(300, 500), {640, 790}},  // in a panel that reserves no space
             Case{{0, 27}, QPoint(1100, 14), {1100, 14}},     // the left end of the panel
             Case{{550, 5}, QPoint(1100, 14), {1100, 14}},    // in other units
             Case{{550, 400}, QPoint(600, 790), {600, 790}},
             Case{{}, QPoint(600, 790), {600, 790}},
             Case{{640, 10}, std::nullopt, {640, 10}},
             Case{{}, std::nullopt, {1279, 0}},
         }) {
        EXPECT_EQ(iconPlace(told, pointer, screen, free), icon) << told.x() << ' ' << told.y();
    }
    EXPECT_EQ(iconPlace({}, std::nullopt, screen, screen.adjusted(0, 0, 0, -30)), QPoint(1279, 799));
}

TEST(PanelPlace, IsWholeBesideTheIconWhereverTheBarIs) {
    const QSize size(290, 200);
    const QRect screen(0, 0, 1280, 800);
    struct Case {
        QPoint click;
        QRect free;
        QPoint place;
    };
    for (const auto& [click, free, place] : {
             Case{{640, 10}, screen.adjusted(0, 30, 0, 0), {495, 36}},      // panel at the top
             Case{{640, 790}, screen.adjusted(0, 0, 0, -30), {495, 564}},   // panel at the bottom
             Case{{1275, 790}, screen.adjusted(0, 0, 0, -30), {984, 564}},  // in the corner
             Case{{10, 400}, screen.adjusted(40, 0, 0, 0), {46, 186}},      // panel at the left
             Case{{640, 10}, screen, {495, 24}},                            // a panel that reserves no space
             Case{{640, 790}, screen, {495, 576}},
             Case{{-600, 10}, QRect(-1280, 30, 1280, 770), {-745, 36}},  // on a screen to the left
             Case{{5, 5}, QRect(0, 0, 200, 100), {6, 6}},                // too little space
         }) {
        EXPECT_EQ(panelPlace(click, size, free), place)
            << click.x() << ' ' << click.y() << " gives " << panelPlace(click, size, free).x() << ' '
            << panelPlace(click, size, free).y();
    }
}

}  // namespace
}  // namespace sordin
