// SPDX-License-Identifier: MIT
// ui_pictures FOLDER: pictures of every view in every state that looks different, in both looks. For people
// to look at; QT_SCALE_FACTOR=2 makes them of twice the size.
#include "ui/ui_engine.h"
#include "ui_fixture.h"

#include <QGuiApplication>
#include <QQuickItem>
#include <QTest>
#include <iostream>

namespace sordin {
namespace {

class Pictures : public UiTest {
public:
    explicit Pictures(QString pictures) : pictures_(std::move(pictures)) {}
    void TestBody() override {}

    void make() {
        wallClock = currentReferenceDate() - 600;  // the test's time moves on while it listens
        for (const bool dark : {false, true}) {
            ui_.appearance().force(dark);
            look_ = dark ? "dark" : "light";
            listening();
            empty();
            full();
            inAd();
            troubles();
            onboarding();
        }
    }

private:
    void take(QQuickWindow& window, const QString& name) {
        QTest::qWait(400);  // what moves has come to rest
        window.grabWindow().save(pictures_ + "/" + look_ + "-" + name + ".png");
    }
    void page(QQuickWindow& window, int index) {
        window.findChild<QObject*>("sidebar")->setProperty("currentIndex", index);
    }
    void start() {
        engine->setOnboardingComplete(true);
        engine->setTestMode(false);
        engine->setIsEnabled(false);
        settle();
        capture->completion = {};
        engine->setIsEnabled(true);
        settle();
        if (capture->completion) {
            capture->completion(std::nullopt);
        }
        settle();
    }
    void hearSignals(int hops, float confidence) {
        scorer->contributions = {};
        const std::array<std::pair<const char*, float>, 6> shares{{{"Audio", 0.8F},
                                                                   {"Keywords", 0.5F},
                                                                   {"Boundary", 0.2F},
                                                                   {"Repetition", 0},
                                                                   {"Timing", 0.1F},
                                                                   {"Loudness", 0.35F}}};
        for (const auto& [name, share] : shares) {
            scorer->contributions.append({name, share * confidence});
        }
        hear(hops, confidence);
    }

    void listening() {
        start();
        for (int i = 0; i < 170; ++i) {
            hearSignals(2, 0.25F + 0.15F * static_cast<float>(std::sin(i * 0.3) * std::sin(i * 0.11)));
        }
        const auto window = ui_.mainWindow(*engine);
        window->show();
        take(*window, "live");
        window->resize(780, 540);
        take(*window, "live-smallest");
        window->resize(1400, 900);
        take(*window, "live-big");
        const auto panel = ui_.panel(*engine);
        panel->show();
        take(*panel, "panel");
    }
    void empty() {
        engine->setHistory({});
        const auto window = ui_.mainWindow(*engine);
        window->show();
        for (const auto& [index, name] : {std::pair(1, "timeline"), std::pair(2, "apps")}) {
            page(*window, index);
            take(*window, QString(name) + "-empty");
        }
    }
    void full() {
        using EventKind = AdEvent::Kind;
        AdHistory history;
        const std::array apps{"Web Browser", "Music", "Podcasts",
                              "A media player with a very long name that does not fit anywhere"};
        for (int i = 0; i < 60; ++i) {
            history.push_back(adAgo(apps[static_cast<std::size_t>(i % 4)], 300 + 1300.0 * i, 8 + (i * 7) % 50,
                                    i % 5 == 1   ? EventKind::testOnly
                                    : i % 9 == 2 ? EventKind::simulated
                                                 : EventKind::muted));
        }
        history[3].reasons.clear();
        engine->setHistory(history);
        const auto window = ui_.mainWindow(*engine);
        window->show();
        const std::array names{"live", "timeline", "apps", "test", "settings"};
        for (int index = 1; index < 5; ++index) {
            page(*window, index);
            take(*window, names[static_cast<std::size_t>(index)]);
        }
        page(*window, 1);
        window->resize(780, 540);
        take(*window, "timeline-smallest");
        page(*window, 4);
        take(*window, "settings-smallest");
        page(*window, 3);
        take(*window, "test-smallest");
        QTest::keyClick(window.get(), Qt::Key_Tab);
        QTest::keyClick(window.get(), Qt::Key_Tab);
        take(*window, "test-focus");
    }
    void inAd() {
        start();
        hearSignals(6, 0.9F);
        const auto window = ui_.mainWindow(*engine);
        window->show();
        take(*window, "ad");
        page(*window, 3);
        take(*window, "ad-test");
        const auto panel = ui_.panel(*engine);
        panel->show();
        take(*panel, "panel-ad");
    }
    void troubles() {
        start();
        permissions->granted = false;
        recogniser->permitted = false;
        engine->refreshAccess();
        const auto window = ui_.mainWindow(*engine);
        window->show();
        take(*window, "no-permission");
        page(*window, 4);
        take(*window, "settings-no-permission");
        page(*window, 3);
        take(*window, "test-no-permission");
        permissions->granted = true;
        recogniser->permitted = true;
        engine->refreshAccess();
        engine->setIsEnabled(false);
        settle();
        engine->setIsEnabled(true);
        settle();
        capture->completion(SystemAudioCapture::Failure(SystemAudioCapture::Error::unreachable));
        settle();
        page(*window, 0);
        take(*window, "failed");
        const auto panel = ui_.panel(*engine);
        panel->show();
        take(*panel, "panel-failed");
    }
    void onboarding() {
        start();
        const auto window = ui_.mainWindow(*engine);
        window->show();
        for (const bool granted : {true, false}) {
            permissions->granted = granted;
            recogniser->permitted = granted;
            engine->refreshAccess();
            engine->setOnboardingComplete(false);
            for (int step = 0; step < 4; ++step) {
                window->findChild<QObject*>("sheet")->setProperty("step", step);
                take(*window, QString("onboarding-%1%2").arg(step).arg(granted ? "" : "-missing"));
            }
            engine->setOnboardingComplete(true);
        }
        permissions->granted = true;
        recogniser->permitted = true;
        engine->refreshAccess();
    }

    QString pictures_;
    QString look_;
    UiEngine ui_;
};

}  // namespace
}  // namespace sordin

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    if (argc != 2) {
        std::cerr << "usage: ui_pictures FOLDER\n";
        return 2;
    }
    sordin::UiEngine::prepare();
    sordin::Pictures(QString::fromLocal8Bit(argv[1])).make();
    return 0;
}
