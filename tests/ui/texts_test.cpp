// SPDX-License-Identifier: MIT
#include "ui/model/date_text.h"
#include "ui/model/status_label.h"
#include "ui/model/summary_texts.h"
#include "ui_fixture.h"

#include <QLocale>
#include <QSignalSpy>
#include <QTimeZone>

namespace sordin {
namespace {

class TextsTest : public UiTest {};

using Tone = StatusLabel::Tone;

TEST_F(TextsTest, TheStatusIsSaidInWordsAndByColour) {
    StatusLabel label;
    EXPECT_EQ(label.text(), "");
    label.setEngine(engine.get());
    const QSignalSpy changes(&label, &StatusLabel::changed);
    const auto is = [&](const char* text, Tone tone) { return label.text() == text && label.tone() == tone; };
    EXPECT_TRUE(is("Starting…", Tone::yellow));
    beginListening();
    EXPECT_TRUE(is("Listening", Tone::green));
    hearAdBegin();
    EXPECT_TRUE(is("Ad detected, muted", Tone::red));
    hearAdEnd();
    engine->setTestMode(true);
    EXPECT_TRUE(is("Listening (test mode)", Tone::green));
    hearAdBegin();
    EXPECT_TRUE(is("Ad detected (test: not muted)", Tone::red));
    engine->setIsEnabled(false);
    settle();
    EXPECT_TRUE(is("Paused", Tone::gray));
    EXPECT_GE(changes.count(), 6);

    permissions->granted = false;
    engine->setIsEnabled(true);
    settle();
    EXPECT_TRUE(is("Needs permission", Tone::orange));
    permissions->granted = true;
    engine->startCapture();
    settle();
    capture->completion(SystemAudioCapture::Failure(SystemAudioCapture::Error::noOutput));
    settle();
    EXPECT_EQ(label.text(), engine->status().message());
    EXPECT_FALSE(label.text().isEmpty());
    EXPECT_EQ(label.tone(), Tone::orange);
}

TEST_F(TextsTest, SummariesCountRealAds) {
    SummaryTexts texts;
    EXPECT_EQ(texts.today(), "Today: 0 ads · 0s muted");
    texts.setEngine(engine.get());
    const QSignalSpy changes(&texts, &SummaryTexts::changed);
    wallClock = currentReferenceDate();
    // Yesterday, at any time of day.
    const double yesterday = QTime(0, 0).secsTo(QTime::currentTime()) + 3600.0;
    engine->setHistory(
        {adAgo("A", 0, 12), adAgo("A", 0, 500, AdEvent::Kind::testOnly), adAgo("B", yesterday, 60)});
    EXPECT_EQ(changes.count(), 1);
    EXPECT_EQ(texts.today(), "Today: 1 ads · 12s muted");
    EXPECT_EQ(texts.adsToday(), "1");
    EXPECT_EQ(texts.mutedToday(), "12s");
    EXPECT_EQ(texts.allTimeMuted(), "1m 12s");
}

TEST(DateText, RelativeDatesAreInWords) {
    const QDateTime now(QDate(2024, 3, 31), QTime(12, 0), QTimeZone::utc());
    constexpr qint64 day = 86'400;
    // The clock may be set back, and 29 February counts as the end of the month.
    const std::vector<std::pair<qint64, const char*>> cases{
        {-5000, "now"},           {0, "now"},
        {1, "1 second ago"},      {59, "59 seconds ago"},
        {60, "1 minute ago"},     {3599, "59 minutes ago"},
        {3600, "1 hour ago"},     {2 * 3600, "2 hours ago"},
        {day, "yesterday"},       {6 * day, "6 days ago"},
        {7 * day, "last week"},   {15 * day, "2 weeks ago"},
        {31 * day, "last month"}, {32 * day, "last month"},
        {366 * day, "last year"}, {3 * 366 * day, "3 years ago"}};
    for (const auto& [seconds, text] : cases) {
        EXPECT_EQ(relativeDate(now.addSecs(-seconds), now), text) << seconds;
    }
}

TEST(DateText, DatesAreWrittenAsTheUsersLocaleDoes) {
    const QDateTime date(QDate(2024, 3, 5), QTime(15, 4, 9));
    const std::vector<std::pair<const char*, const char*>> cases{{"en_US", "Mar 5, 2024, 3:04:09 PM"},
                                                                 {"en_GB", "5 Mar 2024, 15:04:09"},
                                                                 {"de_DE", "5. März 2024, 15:04:09"},
                                                                 {"fi_FI", "5. maalisk. 2024, 15.04.09"},
                                                                 {"ja_JP", "2024年3月5日, 15:04:09"},
                                                                 {"hu_HU", "2024. márc. 5., 15:04:09"},
                                                                 {"ar_EG", "٥ مارس ٢٠٢٤, ٣:٠٤:٠٩ م"},
                                                                 {"da_DK", "5. mar. 2024, 15.04.09"},
                                                                 {"fr_CA", "5 mars 2024, 15 h 04 min 09 s"},
                                                                 {"zh_TW", "2024年3月5日, 下午3:04:09"},
                                                                 {"C", "5 Mar 2024, 15:04:09"}};
    for (const auto& [locale, text] : cases) {
        QLocale::setDefault(QLocale(QLatin1String(locale)));
        QString written = dateAndTime(date);
        // Newer locale data contains narrow spaces.
        EXPECT_EQ(written.replace(QChar(0x202F), ' ').replace(QChar(0xA0), ' ').toStdString(), text)
            << locale;
    }
    for (const QLocale& locale :
         QLocale::matchingLocales(QLocale::AnyLanguage, QLocale::AnyScript, QLocale::AnyTerritory)) {
        QLocale::setDefault(locale);
        const std::string written = dateAndTime(date).toStdString();
        EXPECT_EQ(written.find(locale.dayName(2).toStdString()), std::string::npos)
            << "contains a weekday: " << written;
        EXPECT_NE(written.find(locale.toString(9).toStdString()), std::string::npos)
            << "lacks seconds: " << written;
    }
    QLocale::setDefault(QLocale::c());
}

}  // namespace
}  // namespace sordin
