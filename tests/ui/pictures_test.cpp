// SPDX-License-Identifier: MIT
// Checks the pixels of painted items.
#include "ui/model/confidence_level.h"
#include "ui/model/timeline_strip.h"
#include "ui/model/trail_chart.h"
#include "ui_fixture.h"

#include <QPainter>

namespace sordin {
namespace {

using EventKind = AdEvent::Kind;

class PicturesTest : public UiTest {
protected:
    static QImage picture(QQuickPaintedItem& item, const QSize& size) {
        item.setSize(size);
        QImage image(size, QImage::Format_RGB32);
        image.fill(Qt::white);
        QPainter painter(&image);
        item.paint(&painter);
        return image;
    }
    static void set(QQuickPaintedItem& item,
                    std::initializer_list<std::pair<const char*, QVariant>> properties) {
        for (const auto& [name, value] : properties) {
            ASSERT_TRUE(item.setProperty(name, value)) << name;
        }
    }
    static constexpr QRgb red = qRgb(255, 0, 0);
    static constexpr QRgb blue = qRgb(0, 0, 255);
    static constexpr QRgb gray = qRgb(128, 128, 128);
    static constexpr QRgb black = qRgb(0, 0, 0);
};

TEST_F(PicturesTest, TheLevelIsAsLongAsTheConfidenceAndTheTickAtTheThreshold) {
    ConfidenceLevel bar;
    set(bar, {{"track", QColor(gray)},
              {"level", QColor(blue)},
              {"reached", QColor(red)},
              {"tick", QColor(black)}});
    const auto lengthOf = [&bar](double shown, QRgb colour) {
        bar.setProperty("confidence", shown);
        const QImage image = picture(bar, {200, 8});
        int length = 0;
        for (int x = 0; x < 200; ++x) {
            length += image.pixel(x, 4) == colour ? 1 : 0;
        }
        return length;
    };
    bar.setProperty("threshold", 2.0);  // hidden
    EXPECT_NEAR(lengthOf(0.5, blue), 100, 2) << "except for the round ends";
    EXPECT_NEAR(lengthOf(0, blue), 4, 1) << "the minimum length";
    EXPECT_NEAR(lengthOf(-3, blue), 4, 1);
    EXPECT_NEAR(lengthOf(1.5, blue), 200, 2);
    bar.setProperty("over", true);
    EXPECT_NEAR(lengthOf(0.5, red), 100, 2);
    bar.setProperty("threshold", 0.75);
    EXPECT_EQ(lengthOf(1, black), 2);
    EXPECT_EQ(picture(bar, {200, 8}).pixel(149, 0), black) << "centered, over the whole height";
    EXPECT_EQ(picture(bar, {200, 8}).pixel(150, 7), black);
}

TEST_F(PicturesTest, MarksAreWhereTheAdsWere) {
    AdHistoryModel model;
    model.setEngine(engine.get());
    TimelineStrip strip;
    strip.setEvents(&model);
    set(strip, {{"ground", QColor(gray)}, {"real", QColor(red)}, {"test", QColor(blue)}, {"hours", 1}});
    strip.setSize({360, 34});
    const QDateTime now = QDateTime::currentDateTime();
    engine->setHistory({adAgo("now", 600, 60, EventKind::simulated), adAgo("short", 1800, 0.5),
                        adAgo("edge", 3900, 600), adAgo("over", 5400, 60)});
    const auto marks = strip.marks(now);
    ASSERT_EQ(marks.size(), 3U) << "ads that ended before the range have no mark";
    EXPECT_NEAR(marks[0].place.left(), 300, 0.2);
    EXPECT_NEAR(marks[0].place.width(), 6, 0.01);
    EXPECT_FALSE(marks[0].real);
    EXPECT_NEAR(marks[1].place.left(), 180, 0.2);
    EXPECT_EQ(marks[1].place.width(), 3) << "the minimum width of a mark";
    EXPECT_EQ(marks[2].place.left(), 0);
    EXPECT_EQ(marks[2].row, 2);

    const QImage image = picture(strip, {360, 34});
    EXPECT_EQ(image.pixel(303, 17), blue);
    EXPECT_EQ(image.pixel(181, 17), red);
    EXPECT_EQ(image.pixel(290, 17), gray);
    EXPECT_NE(image.pixel(0, 0), gray) << "the corners are round";
    EXPECT_EQ(strip.rowAt(302), 0);
    EXPECT_EQ(strip.rowAt(184), 1) << "a hit slightly beside the mark";
    EXPECT_EQ(strip.rowAt(295), -1);
    strip.setProperty("hours", 24);
    EXPECT_EQ(strip.marks(now).size(), 4U);
    model.setShowTests(false);
    EXPECT_EQ(strip.marks(now).size(), 3U);
}

TEST_F(PicturesTest, TheChartHasItsRuleAlwaysAndItsLineOverTheTrail) {
    TrailChart chart;
    set(chart,
        {{"line", QColor(blue)}, {"rule", QColor(red)}, {"grid", QColor(gray)}, {"label", QColor(black)}});
    const auto count = [](const QImage& image, QRgb colour, const QRect& where) {
        int pixels = 0;
        for (int y = where.top(); y <= where.bottom(); ++y) {
            for (int x = where.left(); x <= where.right(); ++x) {
                pixels += image.pixel(x, y) == colour ? 1 : 0;
            }
        }
        return pixels;
    };
    const QRect all(0, 0, 400, 140);
    EXPECT_EQ(chart.rowAt(100), -1);
    EXPECT_EQ(count(picture(chart, all.size()), red, all), 0) << "no line without an engine";
    chart.setEngine(engine.get());
    const QImage empty = picture(chart, all.size());
    EXPECT_GT(count(empty, red, all), 100);
    EXPECT_EQ(count(empty, blue, all), 0);
    EXPECT_GT(count(empty, black, all), 10) << "the axis has its labels";
    EXPECT_TRUE(chart.point(0).isEmpty());

    beginListening();
    hear(8, 1);
    hear(8, 0);
    hear(8, 0.2F);
    ASSERT_GE(engine->trail().size(), 8U);
    const QImage full = picture(chart, all.size());
    EXPECT_GT(count(full, blue, all), 100);
    const int last = static_cast<int>(engine->trail().size()) - 1;
    const QVariantMap first = chart.point(0);
    const QVariantMap end = chart.point(last);
    EXPECT_GT(first["confidence"].toDouble(), end["confidence"].toDouble());
    EXPECT_LT(first["y"].toDouble(), end["y"].toDouble()) << "a higher confidence is higher up";
    EXPECT_LT(first["x"].toDouble(), end["x"].toDouble());
    EXPECT_EQ(chart.rowAt(end["x"].toDouble() + 10), last);
    EXPECT_EQ(chart.rowAt(0), 0);
}

}  // namespace
}  // namespace sordin
