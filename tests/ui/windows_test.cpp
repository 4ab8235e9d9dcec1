// SPDX-License-Identifier: MIT
// Creation and destruction of the windows.
#include "ui/windows.h"
#include "ui_fixture.h"

#include <QQuickItem>
#include <QTest>

namespace sordin {
namespace {

class WindowsTest : public UiTest {
protected:
    static bool comes(const std::function<bool()>& condition) { return QTest::qWaitFor(condition); }
    void openMain() {
        windows.showMain();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(windows.main()));
    }
    void openPanel() {
        QTest::qWait(310);  // a click right after closing counts as the click that closed it
        windows.togglePanel({600, 10});
        ASSERT_NE(windows.panel(), nullptr);
        ASSERT_TRUE(QTest::qWaitForWindowActive(windows.panel()));
    }
    static void click(QQuickWindow* window, const char* name) {
        auto* item = window->findChild<QQuickItem*>(name);
        ASSERT_NE(item, nullptr);
        QTest::mouseClick(window, Qt::LeftButton, {},
                          item->mapToScene({item->width() / 2, item->height() / 2}).toPoint());
    }
    [[nodiscard]] int page() const {
        return windows.main()->findChild<QObject*>("sidebar")->property("currentIndex").toInt();
    }

    bool iconIsShown = true;
    Windows windows{*engine,
                    {[this] { return iconIsShown; }, [] { return true; }, [](auto) {}, [](auto) {},
                     [](auto) {}, [] {}, [](auto&) {}}};
};

TEST_F(WindowsTest, AClosedMainWindowIsGoneAndComesBackOnTheFirstPage) {
    openMain();
    windows.main()->findChild<QObject*>("sidebar")->setProperty("currentIndex", 3);
    windows.main()->resize(1000, 700);
    windows.main()->setProperty("sidebarWidth", 200);
    const QPointer<QQuickWindow> first = windows.main();
    windows.showMain();
    EXPECT_EQ(windows.main(), first) << "there is only one main window";
    EXPECT_EQ(page(), 3);
    windows.main()->close();
    EXPECT_EQ(windows.main(), nullptr);
    EXPECT_TRUE(comes([&] { return first.isNull(); })) << "the closed window must be destroyed";
    openMain();
    EXPECT_EQ(page(), 0);
    EXPECT_EQ(windows.main()->size(), QSize(1000, 700));
    EXPECT_TRUE(comes([&] { return windows.main()->findChild<QQuickItem*>("side")->width() == 200; }));
    QTest::keyClick(windows.main(), Qt::Key_W, Qt::ControlModifier);
    EXPECT_EQ(windows.main(), nullptr);
}

TEST_F(WindowsTest, TheGuideSaysWhereTheProgramIsOnceTheWindowIsClosed) {
    engine->setOnboardingComplete(false);
    openMain();
    for (const bool shown : {false, true}) {
        iconIsShown = shown;  // panels register icons after the first window appears
        for (const int step : {2, 3}) {
            windows.main()->findChild<QObject*>("sheet")->setProperty("step", step);
        }
        const auto text = windows.main()->findChild<QObject*>("whereItIs")->property("text").toString();
        EXPECT_EQ(text.contains("no icon"), !shown) << text.toStdString();
    }
}

TEST_F(WindowsTest, ThePanelGoesWhenItIsLeft) {
    openPanel();
    windows.togglePanel({600, 10});
    EXPECT_EQ(windows.panel(), nullptr);
    windows.togglePanel({600, 10});
    EXPECT_EQ(windows.panel(), nullptr) << "the click that took the focus must not reopen it";

    openPanel();
    QTest::keyClick(windows.panel(), Qt::Key_Escape);
    EXPECT_EQ(windows.panel(), nullptr);

    openPanel();
    QTest::mouseClick(windows.panel(), Qt::LeftButton, {}, {-20, 10});
    EXPECT_EQ(windows.panel(), nullptr) << "a click elsewhere closes the panel";

    openPanel();
    QQuickWindow other;
    other.show();
    other.requestActivate();
    EXPECT_TRUE(comes([&] { return windows.panel() == nullptr; })) << "another window closes the panel";

    openPanel();
    click(windows.panel(), "enabled");
    EXPECT_FALSE(engine->isEnabled());
    EXPECT_NE(windows.panel(), nullptr);
    click(windows.panel(), "open");
    EXPECT_EQ(windows.panel(), nullptr);
    ASSERT_NE(windows.main(), nullptr);
    EXPECT_TRUE(windows.main()->isVisible());
}

TEST_F(WindowsTest, NothingIsDrawnThatNobodySees) {
    openMain();
    int frames = 0;
    QObject::connect(
        windows.main(), &QQuickWindow::afterRendering, windows.main(), [&] { ++frames; },
        Qt::DirectConnection);
    const auto live = [&] {
        hear(2, 0.3F);
        hear(2, 0.1F);
        QTest::qWait(100);
    };
    live();
    EXPECT_GT(frames, 0);
    windows.main()->hide();
    frames = 0;
    live();
    EXPECT_EQ(frames, 0);
}

}  // namespace
}  // namespace sordin
