// SPDX-License-Identifier: MIT
#include "engine/ad_history_file.h"
#include "engine/ad_statistics.h"
#include "engine/duration_text.h"
#include "rig/temporary_folder.h"
#include "support/manual_serial_queue.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <limits>

namespace sordin {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
namespace fs = std::filesystem;

AdEvent ad(const char* app, ReferenceDate start, double duration, AdEvent::Kind kind = AdEvent::Kind::muted) {
    return {QUuid::createUuid(), start, duration, app, 0.75, {"Audio", "Keywords"}, kind};
}

class AdHistoryFileTest : public testing::Test {
protected:
    AdHistory load() { return AdHistoryFile(path, queue).load(); }
    AdHistory loadText(const std::string& text) {
        fs::create_directories(path.parent_path());
        writeText(path, text);
        return load();
    }
    [[nodiscard]] std::vector<std::string> files() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(path.parent_path())) {
            names.push_back(entry.path().filename().string());
        }
        return names;
    }

    TemporaryFolder folder;
    fs::path path = folder / "not yet there/history.json";
    std::shared_ptr<ManualSerialQueue> queue = std::make_shared<ManualSerialQueue>("sordin.history");
};

TEST_F(AdHistoryFileTest, WhatIsSavedIsLoadedAgain) {
    EXPECT_THAT(load(), IsEmpty());
    const AdHistory history{ad("Müsic \"&\" \n", 800'000'000.123456, 12.25),
                            ad("", -5, 0, AdEvent::Kind::testOnly),
                            ad("Radio", 1, 1e-3, AdEvent::Kind::simulated)};
    AdHistoryFile file(path, queue);
    file.save({});
    file.save(history);
    queue->runPending();
    EXPECT_EQ(load(), history);
    EXPECT_THAT(files(), ElementsAre("history.json"));
    EXPECT_THAT(contentsOf(path),
                testing::HasSubstr(history[0].id.toString(QUuid::WithoutBraces).toUpper().toStdString()));
}

TEST_F(AdHistoryFileTest, AFileOfAnotherProgramWithTheSameKeysIsRead) {
    const auto history =
        loadText(R"([{"kind":"testOnly","peakConfidence":1,"id":"E621E1F8-C36C-495A-93FC-0C247A3E6E5F",
        "duration":31.5,"app":"Safari","start":7.5e8,"reasons":["Audio"],"more":{"x":[1,null]}}])");
    ASSERT_THAT(history, SizeIs(1));
    EXPECT_EQ(history[0], (AdEvent{QUuid("e621e1f8-c36c-495a-93fc-0c247a3e6e5f"),
                                   7.5e8,
                                   31.5,
                                   "Safari",
                                   1,
                                   {"Audio"},
                                   AdEvent::Kind::testOnly}));
}

TEST_F(AdHistoryFileTest, WhatCannotBeReadCountsAsNoneAndIsKeptBesideTheFirstSave) {
    const std::string good =
        R"({"id":"E621E1F8-C36C-495A-93FC-0C247A3E6E5F","start":1,"duration":2,"app":"a",)"
        R"("peakConfidence":0.5,"reasons":[],"kind":"muted"})";
    ASSERT_THAT(loadText("[" + good + "]"), SizeIs(1));
    std::string nil = good;
    ASSERT_THAT(
        loadText("[" + nil.replace(nil.find("E621"), 36, "00000000-0000-0000-0000-000000000000") + "]"),
        SizeIs(1));
    for (const auto& [from, to] :
         std::vector<std::pair<std::string, std::string>>{{",\"kind\":\"muted\"", ""},
                                                          {"\"muted\"", "\"loud\""},
                                                          {"\"duration\":2", "\"duration\":\"2\""},
                                                          {"\"reasons\":[]", "\"reasons\":[1]"},
                                                          {"\"reasons\":[]", "\"reasons\":\"\""},
                                                          {"E621E1F8", "not an id"},
                                                          {"\"app\":\"a\"", "\"app\":null"},
                                                          {"\"start\":1", "\"start\":[]"},
                                                          {"\"start\":1", "\"start\":1e999"},
                                                          {"\"duration\":2", "\"duration\":1e308"},
                                                          {"\"duration\":2", "\"duration\":-1e10"},
                                                          {"0.5", "-1e999"},
                                                          {"}", ""}}) {
        std::string bad = good;
        bad.replace(bad.find(from), from.size(), to);
        EXPECT_THAT(loadText("[" + good + "," + bad + "]"), IsEmpty()) << bad;
    }
    for (const char* text : {"", "null", "{}", "[1]", "[[]]", "\xff\xfe"}) {
        EXPECT_THAT(loadText(text), IsEmpty()) << text;
    }
    EXPECT_THAT(loadText(std::string(100'000, '[')), IsEmpty());

    writeText(path, "precious");
    AdHistoryFile file(path, queue);
    EXPECT_THAT(file.load(), IsEmpty());
    EXPECT_EQ(contentsOf(path), "precious");
    file.save({ad("Radio", 1, 2)});
    file.save({ad("Radio", 1, 2), ad("Radio", 0, 2)});
    queue->runPending();
    EXPECT_THAT(load(), SizeIs(2));
    const auto names = files();
    ASSERT_THAT(names, SizeIs(2));
    const auto& kept = names[0] == "history.json" ? names[1] : names[0];
    EXPECT_THAT(kept, testing::StartsWith("history.json.damaged-"));
    EXPECT_EQ(contentsOf(path.parent_path() / kept), "precious");
}

TEST_F(AdHistoryFileTest, AFolderThatCannotBeWrittenLosesNothing) {
    writeText(folder / "file", "");
    AdHistoryFile file(folder / "file/history.json", queue);  // not a folder
    EXPECT_THAT(file.load(), IsEmpty());
    file.save({ad("Radio", 1, 2)});
    queue->runPending();
    EXPECT_EQ(contentsOf(folder / "file"), "");

    fs::create_symlink("loop", folder / "loop");  // a symbolic link to itself
    AdHistoryFile looped(folder / "loop/history.json", queue);
    EXPECT_THAT(looped.load(), IsEmpty());
    looped.save({ad("Radio", 1, 2)});
    queue->runPending();

    fs::create_directories(path);  // a folder where the file should be
    EXPECT_THAT(load(), IsEmpty());
}

TEST(AdStatisticsTest, CountsPerApplicationWithoutSimulations) {
    const AdHistory history{ad("Radio", 50, 10), ad("Video", 40, 30, AdEvent::Kind::testOnly),
                            ad("Radio", 60, 15), ad("Video", 30, 4),
                            ad("Radio", 99, 100, AdEvent::Kind::simulated)};
    EXPECT_THAT(appStats(history), ElementsAre(AppStat{"Video", 2, 34, 40}, AppStat{"Radio", 2, 25, 60}));
    EXPECT_THAT(realEvents(history), ElementsAre(history[0], history[2], history[3]));
}

TEST(AdStatisticsTest, TodayIsTheUsersDay) {
    for (const char* zone : {"UTC", "America/Los_Angeles", "Asia/Kathmandu"}) {
        setenv("TZ", zone, 1);
        tzset();
        // Midnight of 21 November 2026 in the user's time zone.
        const double midnight =
            static_cast<double>(QDate(2026, 11, 21).startOfDay().toMSecsSinceEpoch()) / 1000 - 978'307'200;
        const AdHistory history{ad("a", midnight + 86'399, 5),
                                ad("a", midnight, 7),
                                ad("a", midnight - 60, 100),
                                ad("a", midnight + 86'400, 100),
                                ad("a", midnight + 3600, 100, AdEvent::Kind::testOnly),
                                ad("a", 1e300, 1),
                                ad("a", -1e300, 1)};
        EXPECT_EQ(todaySummary(history, midnight + 7200), (TodaySummary{2, 12})) << zone;
    }
    unsetenv("TZ");
    tzset();
}

TEST(DurationTextTest, RoundsToWholeSeconds) {
    const std::vector<std::pair<double, const char*>> expected{
        {0, "0s"},           {42, "42s"},        {59.4, "59s"},    {59.5, "1m 00s"},      {125, "2m 05s"},
        {3599.4, "59m 59s"}, {3599.5, "1h 00m"}, {3725, "1h 02m"}, {360'000, "100h 00m"}, {-3, "-3s"},
        {0.5, "1s"},         {-0.5, "-1s"}};
    for (const auto& [seconds, text] : expected) {
        EXPECT_EQ(formatDuration(seconds), text) << seconds;
    }
    EXPECT_FALSE(formatDuration(std::numeric_limits<double>::infinity()).isEmpty());  // must not trap
    EXPECT_FALSE(formatDuration(std::nan("")).isEmpty());
}

}  // namespace
}  // namespace sordin
