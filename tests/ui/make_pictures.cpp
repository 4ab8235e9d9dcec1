// SPDX-License-Identifier: MIT
// ui_pictures FOLDER: takes pictures of every view in every state, light and dark. It repeats the views with
// little room in all common font sizes, with the longer texts of another language, and in other locales.
// QT_SCALE_FACTOR=2 doubles their size.
#include "ui/ui_engine.h"
#include "ui/wording/wording_catalogue.h"
#include "ui_fixture.h"

#include <QGuiApplication>
#include <QQuickItem>
#include <QTest>
#include <iostream>

namespace sordin {
namespace {

/// Doubles every vowel. Texts become a third longer, as in German or Finnish, but stay readable.
class LongerTexts : public QTranslator {
public:
    LongerTexts() { static_cast<void>(wording_.read(":/wording/linux.ts")); }
    [[nodiscard]] bool isEmpty() const override { return false; }
    [[nodiscard]] QString translate(const char* context, const char* sourceText,
                                    const char* /*disambiguation*/, int /*n*/) const override {
        const QString replaced = wording_.translate(context, sourceText, nullptr, -1);
        QString text = replaced.isNull() ? QString::fromUtf8(sourceText) : replaced;
        return text.replace(QRegularExpression("([aeiou])"), "\\1\\1");
    }

private:
    WordingCatalogue wording_;
};

class Pictures : public UiTest {
public:
    explicit Pictures(QString pictures) : pictures_(std::move(pictures)) {}
    void TestBody() override {}

    void make() {
        wallClock = currentReferenceDate() - 600;  // the test's clock advances while it listens
        for (const bool dark : {false, true}) {
            use(10, dark, "");
            listening();
            empty();
            full();
            inAd();
            troubles();
            onboarding();
            for (const int points : {11, 12, 13, 15}) {
                use(points, dark, QString("-%1pt").arg(points));
                crowded();
            }
        }
        LongerTexts longer;
        QCoreApplication::installTranslator(&longer);
        for (const int points : {10, 13}) {
            use(points, false, QString("-%1pt-long").arg(points));
            crowded();
        }
        QCoreApplication::removeTranslator(&longer);
        for (const char* locale : {"fi_FI", "ja_JP", "hu_HU", "ar_EG"}) {
            QLocale::setDefault(QLocale(QLatin1String(locale)));
            use(10, false, QString("-") + locale);
            listening();
            full();
        }
    }

private:
    void use(int points, bool dark, const QString& name) {
        window_.reset();
        ui_.reset();
        QFont font = QGuiApplication::font();
        font.setPointSize(points);
        QGuiApplication::setFont(font);
        ui_.emplace().appearance().force(dark);
        look_ = (dark ? "dark" : "light") + name;
    }
    void take(const QString& name) {
        QTest::qWait(400);  // until animations have ended
        window_->grabWindow().save(pictures_ + "/" + look_ + "-" + name + ".png");
    }
    void open(std::unique_ptr<QQuickWindow> window) {
        window_ = std::move(window);
        window_->show();
    }
    void openMain() { open(ui_->mainWindow(*engine)); }
    void takePanel(const QString& name) {
        open(ui_->panel(*engine));
        take(name);
    }
    void takePage(int index, const QString& name) {
        window_->findChild<QObject*>("sidebar")->setProperty("currentIndex", index);
        take(name);
    }
    void grant(bool granted) {
        permissions->granted = granted;
        recogniser->permitted = granted;
        engine->refreshAccess();
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
        using Share = std::pair<const char*, float>;
        for (const auto& [name, share] :
             {Share{"Audio", 0.8F}, Share{"Keywords", 0.5F}, Share{"Boundary", 0.2F},
              Share{"Repetition", 0.0F}, Share{"Timing", 0.1F}, Share{"Loudness", 0.35F}}) {
            scorer->contributions.append({name, share * confidence});
        }
        hear(hops, confidence);
    }

    void listening() {
        start();
        for (int i = 0; i < 170; ++i) {
            hearSignals(2, 0.25F + 0.15F * static_cast<float>(std::sin(i * 0.3) * std::sin(i * 0.11)));
        }
        openMain();
        take("live");
        window_->resize(780, 540);
        take("live-smallest");
        window_->resize(1400, 900);
        take("live-big");
        takePanel("panel");
    }
    void empty() {
        engine->setHistory({});
        openMain();
        takePage(1, "timeline-empty");
        takePage(2, "apps-empty");
    }
    void fillHistory() {
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
        history[4].app = QString::fromUtf8("راديو (1)");
        engine->setHistory(history);
    }
    void full() {
        fillHistory();
        openMain();
        const std::array names{"live", "timeline", "apps", "test", "settings"};
        for (int index = 1; index < 5; ++index) {
            takePage(index, names[static_cast<std::size_t>(index)]);
        }
        window_->resize(780, 540);
        takePage(1, "timeline-smallest");
        const auto* strip = window_->findChild<QQuickItem*>("strip");
        QTest::mouseMove(window_.get(),
                         strip->mapToScene({strip->width() * (1 - 4200.0 / (6 * 3600)), 10}).toPoint());
        take("timeline-tip");
        takePage(4, "settings-smallest");
        takePage(3, "test-smallest");
        QTest::keyClick(window_.get(), Qt::Key_Tab);
        QTest::keyClick(window_.get(), Qt::Key_Tab);
        take("test-focus");
    }
    void inAd() {
        start();
        hearSignals(6, 0.9F);
        openMain();
        take("ad");
        takePage(3, "ad-test");
        takePanel("panel-ad");
    }
    void troubles() {
        start();
        grant(false);
        openMain();
        take("no-permission");
        takePage(4, "settings-no-permission");
        takePage(3, "test-no-permission");
        grant(true);
        engine->setIsEnabled(false);
        settle();
        engine->setIsEnabled(true);
        settle();
        capture->completion(SystemAudioCapture::Failure(SystemAudioCapture::Error::unreachable));
        settle();
        takePage(0, "failed");
        takePanel("panel-failed");
    }
    void onboarding() {
        start();
        openMain();
        for (const bool granted : {false, true}) {
            grant(granted);
            takeGuide(granted ? "" : "-missing");
        }
    }
    void takeGuide(const QString& name) {
        engine->setOnboardingComplete(false);
        for (int step = 0; step < 4; ++step) {
            window_->findChild<QObject*>("sheet")->setProperty("step", step);
            take(QString("onboarding-%1%2").arg(step).arg(name));
        }
        engine->setOnboardingComplete(true);
    }
    /// The smallest window with the most content.
    void crowded() {
        start();
        fillHistory();
        grant(false);
        openMain();
        window_->resize(780, 540);
        for (int index = 0; index < 5; ++index) {
            takePage(index, QString("page-%1").arg(index));
        }
        takeGuide("");
        grant(true);
        start();
        hearSignals(6, 0.9F);
        takePage(0, "ad");
        takePanel("panel");
    }

    QString pictures_;
    QString look_;
    std::optional<UiEngine> ui_;
    std::unique_ptr<QQuickWindow> window_;
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
