// SPDX-License-Identifier: MIT
// The views as users operate them: with mouse and keyboard, and by their texts.
#include "ui/ui_engine.h"
#include "ui_fixture.h"

#include <QAccessible>
#include <QQuickItem>
#include <QTest>

namespace sordin {
namespace {

using EventKind = AdEvent::Kind;

class ViewsTest : public UiTest {
protected:
    void openWindow() {
        window = ui.mainWindow(*engine);
        open(*window);
    }
    void openPanel() {
        window = ui.panel(*engine);
        open(*window);
    }
    static void open(QQuickWindow& opened) {
        opened.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&opened));
    }
    /// Opens a page by its index; 0 is Live.
    void openPage(int index) {
        openWindow();
        item("sidebar")->setProperty("currentIndex", index);
    }

    /// A visible item by its object name; pages that were left do not count.
    [[nodiscard]] QQuickItem* find(const QString& name, const QQuickItem* within = nullptr) const {
        const QQuickItem* parent = within != nullptr ? within : window->contentItem()->parentItem();
        for (QQuickItem* child : (parent != nullptr ? parent : window->contentItem())->childItems()) {
            if (child->objectName() == name) {
                return child;
            }
            if (QQuickItem* found = find(name, child)) {
                return found;
            }
        }
        return nullptr;
    }
    [[nodiscard]] QQuickItem* item(const QString& name) const {
        QQuickItem* found = find(name);
        if (found == nullptr) {
            throw std::runtime_error("there is no " + name.toStdString());
        }
        return found;
    }
    [[nodiscard]] std::string textOf(const QString& name) const {
        return item(name)->property("text").toString().toStdString();
    }
    [[nodiscard]] bool shown(const QString& name) const {
        const QQuickItem* found = find(name);
        return found != nullptr && found->isVisible();
    }
    void click(QQuickItem* target) {
        window->grabWindow();  // performs the layout
        const QPointF centre = target->mapToScene({target->width() / 2, target->height() / 2});
        QTest::mouseClick(window.get(), Qt::LeftButton, {}, centre.toPoint());
        settle();
    }
    void click(const QString& name) { click(item(name)); }
    void press(Qt::Key key) {
        QTest::keyClick(window.get(), key);
        settle();
    }

    UiEngine ui;
    std::unique_ptr<QQuickWindow> window;
};

TEST_F(ViewsTest, TheLivePageSaysWhatIsGoingOn) {
    beginListening();
    openWindow();
    EXPECT_EQ(textOf("statusText"), "Listening");
    EXPECT_FALSE(shown("source"));
    EXPECT_FALSE(shown("permissionNotice"));
    EXPECT_FALSE(shown("transcriptCard"));
    EXPECT_EQ(textOf("threshold"), "Mute threshold 57%") << "percentages are truncated";
    window->grabWindow();
    const double height = item("statusCard")->height();
    hearAdBegin();
    window->grabWindow();
    EXPECT_EQ(item("statusCard")->height(), height) << "the layout must not change when an ad begins";
    EXPECT_EQ(textOf("statusText"), "Ad detected, muted");
    EXPECT_EQ(textOf("source"), "Source: Radio");
    EXPECT_TRUE(shown("source"));
    EXPECT_EQ(item("statusSymbol")->property("name").toString(), "speaker.slash.fill");
    EXPECT_EQ(textOf("confidence"), "89%") << "0.9 in single precision, truncated";
    item("restore")->forceActiveFocus(Qt::TabFocusReason);
    press(Qt::Key_Return);
    EXPECT_EQ(window->activeFocusItem(), item("enabled")) << "the focused button was hidden";
    EXPECT_FALSE(shown("restore"));
    EXPECT_TRUE(engine->adActive());
    streams->changed({{ApplicationStream::Kind::playsCall, "9", {}, "Phone"}});
    settle();
    pass(1);
    window->grabWindow();
    EXPECT_EQ(textOf("statusText"), "Listening");
    EXPECT_EQ(textOf("call"), "A call is on: Phone");
    EXPECT_EQ(item("statusCard")->height(), height);
    streams->changed({});
    settle();
    pass(1);
    EXPECT_FALSE(shown("call"));

    click("enabled");
    EXPECT_FALSE(engine->isEnabled());
    EXPECT_EQ(textOf("statusText"), "Paused");
    engine->setIsEnabled(true);
    EXPECT_TRUE(item("enabled")->property("checked").toBool()) << "the switch still follows the engine";

    item("sensitivity")->forceActiveFocus();
    engine->setSensitivity(0.573);
    press(Qt::Key_Right);
    EXPECT_EQ(engine->sensitivity(), 0.6) << "keys move to multiples of 5 %, from any position";
    for (int i = 0; i < 5; ++i) {
        press(Qt::Key_Left);
    }
    EXPECT_EQ(engine->sensitivity(), 0.35) << "truncation must not accumulate";
    press(Qt::Key_Home);
    EXPECT_EQ(engine->sensitivity(), 0);
    press(Qt::Key_Left);
    EXPECT_EQ(engine->sensitivity(), 0);
    engine->setSensitivity(0.7);
    EXPECT_EQ(item("sensitivity")->property("value").toDouble(), 0.7);
}

TEST_F(ViewsTest, TroubleOffersWhatHelps) {
    openWindow();
    capture->completion(SystemAudioCapture::Failure(SystemAudioCapture::Error::unreachable));
    settle();
    EXPECT_FALSE(shown("permissionNotice") || shown("grant"));
    const int starts = capture->starts;
    click("retry");
    EXPECT_EQ(capture->starts, starts + 1);
    beginListening();
    EXPECT_FALSE(shown("retry"));

    permissions->granted = false;
    permissions->hasSettings = false;
    engine->refreshAccess();
    EXPECT_TRUE(shown("permissionNotice") && shown("retry"));
    EXPECT_FALSE(shown("settingsHint"));
    click("grant");
    EXPECT_EQ(permissions->opened, std::vector<std::string>{"Privacy_ScreenCapture"});
    EXPECT_TRUE(shown("settingsHint")) << "no settings page could be opened";
    permissions->grantedWhenAsked = true;
    click("grant");
    EXPECT_FALSE(shown("permissionNotice") || shown("settingsHint"));

    item("sidebar")->setProperty("currentIndex", 4);
    permissions->granted = false;
    recogniser->permitted = false;
    click("refresh");
    QQuickItem* speech = find("grant", item("speech"));
    ASSERT_TRUE(speech->isVisible() && find("grant", item("screen"))->isVisible());
    click(find("grant", item("screen")));
    recogniser->permitted = true;
    click(speech);
    EXPECT_TRUE(engine->screenAccess() && engine->speechAccess());
    EXPECT_FALSE(find("grant", item("speech"))->isVisible());
}

TEST_F(ViewsTest, TheHistoryIsListedFilteredClearedAndBroughtBack) {
    openPage(1);
    EXPECT_TRUE(shown("noAds"));
    EXPECT_FALSE(item("clear")->isEnabled());
    engine->setHistory({adAgo("Radio", 60, 6, EventKind::simulated), adAgo("Radio", 120, 30)});
    EXPECT_FALSE(shown("noAds"));
    EXPECT_EQ(item("list")->property("count").toInt(), 2);
    click("showTests");
    EXPECT_EQ(item("list")->property("count").toInt(), 1);
    click("clear");
    EXPECT_TRUE(engine->history().empty());
    EXPECT_TRUE(shown("noAds"));
    EXPECT_TRUE(item("undo")->hasActiveFocus()) << "the keyboard focus moves to Undo";
    item("sidebar")->setProperty("currentIndex", 0);
    item("sidebar")->setProperty("currentIndex", 1);
    ASSERT_TRUE(shown("undoBar")) << "the bar must survive a change of pages";
    click("undo");
    EXPECT_EQ(engine->history().size(), 2U);
    EXPECT_FALSE(shown("undoBar"));

    EXPECT_EQ(textOf("ago"), "6 h ago");
    QQuickItem* range = item("range");
    const QPointF first = range->mapToScene({20, range->height() / 2});
    QTest::mouseClick(window.get(), Qt::LeftButton, {}, first.toPoint());
    EXPECT_EQ(textOf("ago"), "1 h ago");
    press(Qt::Key_Right);
    EXPECT_EQ(textOf("ago"), "6 h ago") << "arrow keys change the range";

    QQuickItem* strip = item("strip");
    window->grabWindow();
    QTest::mouseMove(window.get(), strip->mapToScene({strip->width() - 2, 5}).toPoint());
    ASSERT_TRUE(QTest::qWaitFor([this] { return shown("tip"); }));
    EXPECT_THAT(textOf("tip"), testing::MatchesRegex("Radio, 30s, .* · Audio, Keywords, Muted, 85% conf\\."));
    EXPECT_GE(item("tip")->y(), strip->height()) << "the tooltip must not cover the marks";
    item("sidebar")->setProperty("currentIndex", 2);
    EXPECT_FALSE(shown("noStatistics"));
    item("sidebar")->setProperty("currentIndex", 1);
    EXPECT_TRUE(item("showTests")->property("checked").toBool())
        << "each visit of the page starts with the default";
}

TEST_F(ViewsTest, FiveHundredAdsAreOneListThatScrollsWithItsPage) {
    AdHistory history;
    for (int i = 0; i < 500; ++i) {
        history.push_back(adAgo("Radio", 60.0 * i, 10));
    }
    engine->setHistory(history);
    openPage(1);
    window->grabWindow();
    QQuickItem* list = item("list");
    EXPECT_LT(list->findChildren<QQuickItem*>().size(), 600)
        << "only visible rows are created; a row has a dozen items";
    const auto topOf = [this](const char* name) { return item(name)->mapToScene({}).y(); };
    const double strip = topOf("strip");
    EXPECT_GT(strip, 100) << "the header scrolls with the list";
    const double clear = topOf("clear");
    press(Qt::Key_PageDown);
    EXPECT_LT(topOf("strip"), strip - 200);
    EXPECT_EQ(topOf("clear"), clear) << "the button must stay visible";
    EXPECT_EQ(item("detail")->property("contentY").toDouble(), 0) << "only the list scrolls";
    press(Qt::Key_Tab);
    EXPECT_GT(topOf("range"), 0) << "the focused item must be visible";
    EXPECT_EQ(list->width(), item("strip")->width() + 32) << "rows and strip have the same right edge";
}

TEST_F(ViewsTest, TheTestPageTriesAndForgets) {
    openPage(3);
    EXPECT_TRUE(shown("waiting"));
    EXPECT_FALSE(shown("spinner"));
    click("testMode");
    EXPECT_TRUE(engine->testMode());
    engine->setTestMode(false);
    EXPECT_FALSE(item("testMode")->property("checked").toBool());
    click("simulate");
    EXPECT_TRUE(engine->simulating());
    EXPECT_FALSE(item("simulate")->isEnabled());
    EXPECT_TRUE(shown("spinner"));
    pass(7);
    EXPECT_TRUE(item("simulate")->isEnabled());
    beginListening();
    hearAdBegin();
    EXPECT_FALSE(item("simulate")->isEnabled()) << "no simulation during a real ad";
    EXPECT_EQ(textOf("testTranscript"), "Transcription runs only on suspicious speech segments.");
    EXPECT_FALSE(shown("noSpeech"));
    recogniser->permitted = false;
    engine->refreshAccess();
    EXPECT_TRUE(shown("noSpeech"));
    EXPECT_FALSE(shown("forgotten"));
    click("forget");
    EXPECT_TRUE(shown("forgotten"));

    QQuickItem* transcript = item("testTranscript");
    transcript->setProperty("words", QString("some words ").repeated(100) + "and the last");
    EXPECT_EQ(transcript->property("lineCount").toInt(), 4);
    EXPECT_THAT(textOf("testTranscript"), testing::MatchesRegex("… .* words and the last"));
    transcript->setProperty("words", "a few");
    EXPECT_EQ(textOf("testTranscript"), "a few");
}

TEST_F(ViewsTest, SettingsChangeTheEngine) {
    openPage(4);
    EXPECT_EQ(textOf("duckText"), "Mute");
    item("duck")->forceActiveFocus();
    press(Qt::Key_Right);
    EXPECT_EQ(engine->duckPercent(), 5);
    EXPECT_EQ(textOf("duckText"), "Duck to 5%");
    press(Qt::Key_End);
    press(Qt::Key_Right);
    EXPECT_EQ(engine->duckPercent(), 50);
    QQuickItem* duck = item("duck");
    QTest::mouseClick(window.get(), Qt::LeftButton, {},
                      duck->mapToScene({duck->width() * 0.33, duck->height() / 2}).toPoint());
    EXPECT_EQ(engine->duckPercent(), 15) << "the slider moves in steps";
    const auto* range = QAccessible::queryAccessibleInterface(duck)->valueInterface();
    EXPECT_EQ(range->minimumValue().toDouble(), 0);
    EXPECT_EQ(range->maximumValue().toDouble(), 50);
    click("transcription");
    EXPECT_FALSE(engine->transcriptionEnabled());
    click("tunedDetection");
    EXPECT_TRUE(engine->tunedDetection());
    click("pauseInCalls");
    EXPECT_FALSE(engine->pauseInCalls());
    EXPECT_FALSE(find("sheet") != nullptr &&
                 window->findChild<QObject*>("sheet")->property("visible").toBool());
    click("onboarding");
    EXPECT_TRUE(window->findChild<QObject*>("sheet")->property("visible").toBool());
}

TEST_F(ViewsTest, TheGuideIsFinishedByItsLastButtonAlone) {
    engine->setIsEnabled(false);
    engine->setOnboardingComplete(false);
    settle();
    openWindow();
    QObject* sheet = window->findChild<QObject*>("sheet");
    ASSERT_TRUE(QTest::qWaitFor([&] { return sheet->property("opened").toBool(); }));
    press(Qt::Key_Escape);
    QTest::mouseClick(window.get(), Qt::LeftButton, {}, QPoint(5, 5));
    EXPECT_FALSE(engine->onboardingComplete());
    EXPECT_TRUE(sheet->property("visible").toBool());
    EXPECT_FALSE(shown("enabled") || item("sidebar")->isEnabled())
        << "items behind the guide must be disabled";
    EXPECT_EQ(textOf("sheetTitle"), "Welcome to Sordin");
    EXPECT_FALSE(shown("back"));
    click("primary");
    EXPECT_EQ(textOf("sheetTitle"), "System audio permission");
    EXPECT_EQ(textOf("permission"), "Permission granted");
    EXPECT_FALSE(shown("reopen"));
    permissions->granted = false;
    permissions->hasSettings = false;
    click("recheck");
    EXPECT_EQ(textOf("permission"), "Not granted yet");
    EXPECT_TRUE(shown("reopen"));
    click("openSettings");
    EXPECT_TRUE(shown("settingsHint"));
    permissions->grantedWhenAsked = true;
    click("request");
    EXPECT_EQ(textOf("permission"), "Permission granted");
    click("back");
    EXPECT_EQ(textOf("sheetTitle"), "Welcome to Sordin");
    press(Qt::Key_Return);
    press(Qt::Key_Return);
    EXPECT_EQ(textOf("sheetTitle"), "Speech recognition (optional)");
    EXPECT_FALSE(shown("noPrompt") || shown("skip"));
    click("primary");
    EXPECT_EQ(textOf("primary"), "Start listening");
    EXPECT_FALSE(engine->onboardingComplete());
    const int starts = capture->starts;
    press(Qt::Key_Return);
    EXPECT_TRUE(engine->onboardingComplete());
    EXPECT_EQ(capture->starts, starts) << "the program is switched off";
    engine->setOnboardingComplete(false);
    EXPECT_EQ(sheet->property("step").toInt(), 0) << "the guide starts from the beginning";
    engine->setIsEnabled(true);
    settle();
}

TEST_F(ViewsTest, NothingIsOutOfReachOrBrokenInLargeType) {
    const QFont usual = QGuiApplication::font();
    QFont large = usual;
    large.setPointSize(15);
    QGuiApplication::setFont(large);
    UiEngine largeUi;
    wallClock = currentReferenceDate();
    engine->setHistory({adAgo("Radio", 0, 10'000)});
    beginListening();
    hearAdBegin();
    window = largeUi.panel(*engine);
    open(*window);
    window->grabWindow();
    const auto bottom = [this](const QString& name) {
        return item(name)->mapToScene({0, item(name)->height()}).y();
    };
    EXPECT_LE(bottom("statusText"), item("level")->mapToScene({}).y());
    EXPECT_LT(bottom("open"), window->height());

    engine->setOnboardingComplete(false);
    window = largeUi.mainWindow(*engine);
    window->resize(780, 540);
    open(*window);
    window->findChild<QObject*>("sheet")->setProperty("step", 3);
    window->grabWindow();
    EXPECT_LT(bottom("primary"), window->height());
    EXPECT_GT(bottom("lastWords"), item("primary")->mapToScene({}).y())
        << "the text must exceed the smallest window";
    press(Qt::Key_PageDown);
    EXPECT_LE(bottom("lastWords"), item("primary")->mapToScene({}).y());
    engine->setOnboardingComplete(true);
    hear(6, 0.9F);
    window->grabWindow();
    EXPECT_TRUE(item("restore")->isVisible());
    EXPECT_EQ(item("statusText")->property("lineCount"), 1);
    EXPECT_LE(item("statusText")->property("contentWidth").toReal(), item("statusText")->width());
    window.reset();
    QGuiApplication::setFont(usual);
}

TEST_F(ViewsTest, ThePanelHasTheMostImportantAtHand) {
    openPanel();
    EXPECT_EQ(window->width(), 290);
    const QQuickItem* last = item("open");
    EXPECT_GT(window->height(), last->mapToScene({0, last->height()}).y())
        << "the last item must be inside the window";
    EXPECT_EQ(window->minimumSize(), window->size());
    EXPECT_EQ(window->maximumSize(), window->size());
    EXPECT_EQ(textOf("statusText"), "Starting…");
    EXPECT_EQ(textOf("today"), "Today: 0 ads · 0s muted");
    EXPECT_EQ(textOf("sensitivityText"), "50%");
    engine->setSensitivity(0.999);
    EXPECT_EQ(textOf("sensitivityText"), "99%");
    beginListening();
    hearAdBegin();
    window->grabWindow();
    EXPECT_GT(window->height(), last->mapToScene({0, last->height()}).y())
        << "also with an additional button";
    QAccessible::queryAccessibleInterface(item("restore"))->actionInterface()->doAction("Press");
    settle();
    EXPECT_FALSE(shown("restore"));
    EXPECT_TRUE(engine->adActive());
    click("enabled");
    EXPECT_FALSE(engine->isEnabled());
}

TEST_F(ViewsTest, AnApplicationIsLeftOutByItsMenu) {
    engine->setHistory({adAgo("Radio", 60, 6)});
    openPage(2);
    item("options")->forceActiveFocus(Qt::TabFocusReason);
    press(Qt::Key_Return);
    press(Qt::Key_Down);
    EXPECT_EQ(textOf("ignore"), "Do not listen to this application");
    press(Qt::Key_Return);
    EXPECT_EQ(engine->ignoredNames(), QStringList{"Radio"});
    EXPECT_THAT(textOf("appDetails"), testing::EndsWith(" · Not listened to"));
    EXPECT_EQ(window->activeFocusItem(), item("options")) << "the focus returns to the button";
    const auto pressed = [this](const char* name) {
        QAccessible::queryAccessibleInterface(item(name))->actionInterface()->doAction("Press");
        settle();
    };
    pressed("options");
    EXPECT_EQ(textOf("ignore"), "Listen to this application");
    pressed("ignore");
    EXPECT_TRUE(engine->ignoredNames().isEmpty());
}

TEST_F(ViewsTest, TheKeyboardReachesEverything) {
    openWindow();
    press(Qt::Key_Down);
    press(Qt::Key_Down);
    press(Qt::Key_Down);
    EXPECT_EQ(window->property("section").toString(), "test");
    const auto focused = [this] {
        const QQuickItem* at = window->activeFocusItem();
        while (at != nullptr && at->objectName().isEmpty()) {
            at = at->parentItem();
        }
        return at != nullptr ? at->objectName() : QString();
    };
    std::vector<QString> reached;
    for (int i = 0; i < 4; ++i) {
        press(Qt::Key_Tab);
        reached.push_back(focused());
    }
    EXPECT_EQ(reached, (std::vector<QString>{"testMode", "simulate", "forget", "sidebar"}));
    press(Qt::Key_Tab);
    EXPECT_TRUE(window->activeFocusItem()->property("visualFocus").toBool()) << "the focus must be visible";
    press(Qt::Key_Space);
    EXPECT_TRUE(engine->testMode());

    engine->setHistory({adAgo("Radio", 60, 6)});
    item("sidebar")->setProperty("currentIndex", 1);
    item("sidebar")->forceActiveFocus(Qt::TabFocusReason);
    reached.clear();
    for (int i = 0; i < 5; ++i) {
        press(Qt::Key_Tab);
        reached.push_back(focused());
        if (i == 0) {
            EXPECT_EQ(window->activeFocusItem()->property("text").toString(), "6 h") << "the selected entry";
        }
    }
    EXPECT_EQ(reached, (std::vector<QString>{"range", "list", "showTests", "clear", "sidebar"}));
}

TEST_F(ViewsTest, TheSidebarCanBeDraggedWithinItsBounds) {
    openWindow();
    window->grabWindow();
    QPoint edge(180, 300);
    for (const int x : {400, 20}) {
        QTest::mousePress(window.get(), Qt::LeftButton, {}, edge);
        QTest::mouseMove(window.get(), {x, 300});
        QTest::mouseRelease(window.get(), Qt::LeftButton, {}, {x, 300});
        window->grabWindow();
        edge.setX(static_cast<int>(item("side")->width()));
        EXPECT_EQ(edge.x(), x == 400 ? 220 : 160);
    }
}

TEST_F(ViewsTest, TextsCanBeReadInBothLooks) {
    openWindow();
    QQmlComponent component(qmlEngine(window.get()));
    component.setData("import QtQuick; import Sordin.Style\nQtObject { property var theme: Theme }", {});
    const std::unique_ptr<QObject> holder(component.create());
    ASSERT_TRUE(holder) << component.errorString().toStdString();
    QObject* theme = holder->property("theme").value<QObject*>();
    const auto contrast = [theme](const char* a, const char* b) {
        double result = 0;
        QMetaObject::invokeMethod(theme, "contrast", Q_RETURN_ARG(double, result),
                                  Q_ARG(QColor, theme->property(a).value<QColor>()),
                                  Q_ARG(QColor, theme->property(b).value<QColor>()));
        return result;
    };
    for (const bool dark : {false, true}) {
        ui.appearance().force(dark);
        for (const char* ground : {"card", "window", "sidebar"}) {
            EXPECT_GE(contrast("text", ground), 4.5) << ground << dark;
            EXPECT_GE(contrast("secondary", ground), 4.5) << ground << dark;
        }
        EXPECT_GE(contrast("orangeText", "card"), 4.5) << dark;
        EXPECT_GE(contrast("accentText", "accent"), 4.5) << dark;
        EXPECT_GE(contrast("red", "button"), 4.5) << dark;
        for (const char* mark : {"accent", "red", "orange", "yellow", "green", "gray", "edge"}) {
            EXPECT_GE(contrast(mark, "card"), 3) << mark << dark;
        }
    }
}

}  // namespace
}  // namespace sordin
