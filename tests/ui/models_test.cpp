// SPDX-License-Identifier: MIT
#include "ui/model/ad_history_model.h"
#include "ui/model/app_stats_model.h"
#include "ui/model/history_clearing.h"
#include "ui/model/signals_model.h"
#include "ui_fixture.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QTest>

namespace sordin {
namespace {

using Mode = QAbstractItemModelTester::FailureReportingMode;
using EventKind = AdEvent::Kind;
using testing::ElementsAre;

class ModelsTest : public UiTest {
protected:
    [[nodiscard]] static std::vector<QString> apps(const QAbstractItemModel& model) {
        std::vector<QString> names;
        for (int row = 0; row < model.rowCount(); ++row) {
            names.push_back(model.index(row, 0).data().toString());
        }
        return names;
    }
};

TEST_F(ModelsTest, HistoryFollowsTheEngineRowByRow) {
    engine->setHistory({adAgo("B", 60, 10), adAgo("A", 120, 10)});
    AdHistoryModel model;
    const QAbstractItemModelTester tester(&model, Mode::Fatal);
    model.setEngine(engine.get());
    EXPECT_THAT(apps(model), ElementsAre("B", "A"));

    const QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
    const QPersistentModelIndex b = model.index(0);
    add(adAgo("C", 30, 10));
    EXPECT_THAT(apps(model), ElementsAre("C", "B", "A"));
    EXPECT_EQ(b.row(), 1) << "existing rows keep their place";
    AdHistory full = engine->history();
    full.insert(full.begin(), adAgo("D", 20, 10));
    full.pop_back();
    engine->setHistory(full);
    EXPECT_THAT(apps(model), ElementsAre("D", "C", "B"));
    EXPECT_EQ(b.row(), 2);
    EXPECT_EQ(resets.count(), 0);

    engine->setHistory({adAgo("X", 10, 5)});
    EXPECT_THAT(apps(model), ElementsAre("X"));
    model.setEngine(nullptr);
    EXPECT_EQ(model.rowCount(), 0);
}

TEST_F(ModelsTest, HistoryListsTestsOnlyIfWanted) {
    engine->setHistory({adAgo("Simulated", 10, 6, EventKind::simulated), adAgo("Real", 20, 10),
                        adAgo("Watched", 40, 10, EventKind::testOnly)});
    AdHistoryModel model;
    const QAbstractItemModelTester tester(&model, Mode::Fatal);
    model.setEngine(engine.get());
    EXPECT_THAT(apps(model), ElementsAre("Simulated", "Real", "Watched"));
    model.setShowTests(false);
    EXPECT_THAT(apps(model), ElementsAre("Real"));
    add(adAgo("Another test", 5, 6, EventKind::testOnly));
    EXPECT_THAT(apps(model), ElementsAre("Real"));
    add(adAgo("Another", 1, 1));
    EXPECT_THAT(apps(model), ElementsAre("Another", "Real"));
    model.setShowTests(true);
    EXPECT_EQ(model.rowCount(), 5);

    const auto real = model.index(0);
    const auto simulated = model.index(2);
    EXPECT_TRUE(real.data(AdHistoryModel::realRole).toBool());
    EXPECT_FALSE(simulated.data(AdHistoryModel::realRole).toBool());
    EXPECT_EQ(real.data(AdHistoryModel::confidenceRole).toInt(), 85) << "percentages are truncated";
    EXPECT_EQ(simulated.data(AdHistoryModel::durationRole).toString(), "6s");
    const QString details = real.data(AdHistoryModel::detailsRole).toString();
    EXPECT_TRUE(details.endsWith(" · Audio, Keywords"));
    EXPECT_EQ(model.summary(0),
              "Another, 1s, " + details.section(" · ", 0, 0) + " · Audio, Keywords, Muted, 85% conf.");
    EXPECT_EQ(model.summary(-1), "");
    AdEvent plain = adAgo(QString::fromUtf8("راديو"), 0, 1);
    plain.reasons.clear();
    add(plain);
    EXPECT_TRUE(model.index(0).data(AdHistoryModel::detailsRole).toString().endsWith(" · –"));
    EXPECT_FALSE(model.summary(0).isRightToLeft()) << "the order of the parts stays";
}

TEST_F(ModelsTest, AClearedHistoryComesBackBehindWhatIsNew) {
    HistoryClearing clearing;
    clearing.setEngine(engine.get());
    EXPECT_FALSE(clearing.canClear());
    clearing.clear();
    EXPECT_FALSE(clearing.canUndo()) << "there was nothing to clear";

    const auto kept = [this] { return AdHistoryFile(folder / "Sordin/history.json", historyQueue).load(); };
    const AdHistory before{adAgo("B", 60, 10), adAgo("A", 120, 10, EventKind::testOnly)};
    engine->setHistory(before);
    clearing.clear();
    settle();
    EXPECT_TRUE(engine->history().empty());
    EXPECT_TRUE(kept().empty());
    EXPECT_TRUE(clearing.canUndo());
    EXPECT_FALSE(clearing.canClear());
    const AdEvent recent = adAgo("New", 1, 1);
    add(recent);
    clearing.undo();
    settle();
    EXPECT_EQ(engine->history(), (AdHistory{recent, before[0], before[1]}));
    EXPECT_EQ(kept(), engine->history());
    EXPECT_FALSE(clearing.canUndo());
}

TEST_F(ModelsTest, StatisticsSayHowMuchCameFromWhere) {
    AppStatsModel model;
    const QAbstractItemModelTester tester(&model, Mode::Fatal);
    model.setEngine(engine.get());
    EXPECT_EQ(model.rowCount(), 0);
    engine->setHistory({adAgo("Radio", 7300, 30), adAgo("Browser", 90'000, 20), adAgo("Radio", 100'000, 50)});
    EXPECT_THAT(apps(model), ElementsAre("Radio", "Browser"));
    const auto radio = model.index(0);
    const auto browser = model.index(1);
    EXPECT_EQ(radio.data(AppStatsModel::summaryRole).toString(), "2 ads · 1m 20s muted");
    EXPECT_EQ(radio.data(AppStatsModel::detailsRole).toString(), "Average 40s · last 2 hours ago");
    EXPECT_EQ(radio.data(AppStatsModel::shareRole).toDouble(), 1);
    EXPECT_EQ(browser.data(AppStatsModel::shareRole).toDouble(), 0.25);
    EXPECT_EQ(browser.data(AppStatsModel::detailsRole).toString(), "Average 20s · last yesterday");
    engine->setHistory({adAgo("Radio", 60, 0)});
    EXPECT_EQ(model.index(0).data(AppStatsModel::shareRole).toDouble(), 0)
        << "without any duration the share is 0";

    engine->setIgnored("Radio", true);
    engine->setIgnored("Phone", true);
    EXPECT_THAT(apps(model), ElementsAre("Radio", "Phone"));
    for (const int row : {0, 1}) {
        EXPECT_EQ(model.index(row).data(AppStatsModel::ignoredRole), true);
    }
    EXPECT_EQ(model.index(1).data(AppStatsModel::summaryRole), "");
    EXPECT_EQ(model.index(1).data(AppStatsModel::detailsRole), "");
    engine->setIgnored("Phone", false);
    engine->setIgnored("Radio", false);
    EXPECT_THAT(apps(model), ElementsAre("Radio"));
    EXPECT_EQ(model.index(0).data(AppStatsModel::ignoredRole), false);
}

TEST_F(ModelsTest, SignalsKeepTheirRows) {
    SignalsModel model;
    const QAbstractItemModelTester tester(&model, Mode::Fatal);
    model.setEngine(engine.get());
    EXPECT_EQ(model.rowCount(), 0);
    const auto hearSignals = [this](float audio, float keywords) {
        scorer->contributions = {};
        scorer->contributions.append({"Audio", audio});
        scorer->contributions.append({"Keywords", keywords});
        hear(2, 0.3F);
    };
    beginListening();
    hearSignals(0.1F, 0.2F);
    ASSERT_EQ(model.rowCount(), 2);
    const QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
    const QSignalSpy changes(&model, &QAbstractItemModel::dataChanged);
    hearSignals(1.7F, -0.5F);
    EXPECT_EQ(resets.count(), 0);
    EXPECT_GE(changes.count(), 1);
    EXPECT_EQ(model.index(0).data(SignalsModel::levelRole).toDouble(), 1);
    EXPECT_EQ(model.index(0).data(SignalsModel::valueRole).toString(), "1.70")
        << "values above 1 are shown unchanged";
    EXPECT_EQ(model.index(1).data(SignalsModel::levelRole).toDouble(), 0);
    engine->setIsEnabled(false);
    settle();
    EXPECT_EQ(model.rowCount(), 0);
}

}  // namespace
}  // namespace sordin
