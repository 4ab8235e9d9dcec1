// SPDX-License-Identifier: MIT
#include "app/qt_main_queue.h"

#include <gmock/gmock.h>

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <atomic>
#include <optional>
#include <thread>
#include <vector>

namespace sordin {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

class QtMainQueueTest : public testing::Test {
protected:
    /// Runs the event loop until the condition holds; false after the deadline.
    template <class Condition>
    static bool runUntil(Condition condition) {
        const QDeadlineTimer deadline(20s);
        while (!condition() && !deadline.hasExpired()) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
        }
        return condition();
    }
    /// Runs the event loop for `time`, so that work that must not run would run.
    static void runFor(std::chrono::milliseconds time) {
        const QDeadlineTimer deadline(time);
        while (!deadline.hasExpired()) {
            QCoreApplication::processEvents();
        }
    }

    int argc = 1;
    char name[5] = "test";
    char* argv[2] = {name, nullptr};
    QCoreApplication application{argc, argv};
    std::optional<QtMainQueue> queue{std::in_place};
    std::vector<int> log;
};

TEST_F(QtMainQueueTest, RunsWorkOnTheMainThreadInTheOrderInWhichItWasPosted) {
    const auto main = std::this_thread::get_id();
    std::thread other([&] {
        EXPECT_FALSE(queue->isCurrent());
        for (int i = 0; i < 3; ++i) {
            queue->post([&, i] {
                EXPECT_EQ(std::this_thread::get_id(), main);
                log.push_back(i);
            });
        }
        queue->sync([&] { log.push_back(3); });
        log.push_back(4);  // runs alone, after sync() has returned
    });
    EXPECT_TRUE(runUntil([&] { return log.size() == 5; }));
    other.join();
    EXPECT_THAT(log, ElementsAre(0, 1, 2, 3, 4));
    EXPECT_TRUE(queue->isCurrent());
    queue->sync([&] { log.clear(); });
    EXPECT_TRUE(log.empty());
}

TEST_F(QtMainQueueTest, OtherThreadsMayStartAndDropTimers) {
    std::atomic<int> fired = 0;
    std::thread([&] { Timer kept = queue->every(1ms, [&] { ++fired; }); }).join();
    runFor(30ms);
    EXPECT_EQ(fired, 0);  // destroyed before the event loop ran
    Timer timer;
    std::thread([&] { timer = queue->every(1ms, [&] { ++fired; }); }).join();
    EXPECT_TRUE(runUntil([&] { return fired > 2; }));
    std::thread([&] { timer.cancel(); }).join();
    const int then = fired;
    runFor(30ms);
    EXPECT_EQ(fired, then);
}

TEST_F(QtMainQueueTest, NothingRunsAfterTheQueue) {
    Timer timer = queue->every(1ms, [&] { log.push_back(1); });
    queue->post([&] { log.push_back(2); });
    queue.reset();
    runFor(30ms);
    EXPECT_TRUE(log.empty());
    timer.cancel();
}

}  // namespace
}  // namespace sordin
