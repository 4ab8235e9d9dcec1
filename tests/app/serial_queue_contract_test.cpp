// SPDX-License-Identifier: MIT
// The guarantees of every SerialQueue.
#include "app/qt_main_queue.h"
#include "support/asio_serial_queue.h"
#include "support/manual_serial_queue.h"

#include <gmock/gmock.h>

#include <QCoreApplication>
#include <chrono>
#include <optional>
#include <thread>
#include <vector>

namespace sordin {
namespace {

using namespace std::chrono_literals;
using Time = std::chrono::nanoseconds;

Time steadyTime() {
    return std::chrono::steady_clock::now().time_since_epoch();
}

struct AsioDriver {
    std::optional<AsioSerialQueue> queue{std::in_place, "sordin.test"};
    [[nodiscard]] static Time now() { return steadyTime(); }
    static void pass() { std::this_thread::sleep_for(1ms); }
};

struct ManualDriver {
    std::optional<ManualSerialQueue> queue{std::in_place, "sordin.test"};
    [[nodiscard]] Time now() const { return queue->now(); }
    void pass() { queue->advance(1ms); }
};

struct QtDriver {
    int argc = 1;
    char name[5] = "test";
    char* argv[2] = {name, nullptr};
    QCoreApplication application{argc, argv};
    std::optional<QtMainQueue> queue{std::in_place};
    [[nodiscard]] static Time now() { return steadyTime(); }
    static void pass() { QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 1); }
};

template <class Driver>
class SerialQueueContract : public testing::Test {
protected:
    /// Runs the queue until the condition holds, checked from its own work.
    template <class Condition>
    testing::AssertionResult comes(Condition condition) {
        const auto deadline = steadyTime() + 20s;
        for (bool so = false; steadyTime() < deadline; driver.pass()) {
            driver.queue->sync([&] { so = condition(); });
            if (so) {
                return testing::AssertionSuccess();
            }
        }
        return testing::AssertionFailure();
    }
    Driver driver;
};
using Drivers = testing::Types<AsioDriver, ManualDriver, QtDriver>;
TYPED_TEST_SUITE(SerialQueueContract, Drivers);

TYPED_TEST(SerialQueueContract, TimersAreNeverEarly) {
    struct Run {
        Time due;
        Time at;
    };
    auto& queue = *this->driver.queue;
    std::vector<Run> runs;
    std::vector<Timer> timers;
    for (const Time delay : {1ms, 19ms, 101ms, 117ms, 133ms, 149ms, 165ms, 181ms, 197ms}) {
        const auto begin = this->driver.now();
        timers.push_back(queue.after(delay, [&, due = begin + delay] {
            runs.push_back({due, this->driver.now()});
        }));
        timers.push_back(queue.every(delay, [&, begin, delay, count = 0]() mutable {
            EXPECT_TRUE(queue.isCurrent());
            if (++count <= 3) {
                runs.push_back({begin + count * delay, this->driver.now()});
            }
        }));
    }
    EXPECT_TRUE(this->comes([&] { return runs.size() == 2 * timers.size(); }));
    queue.sync([&] { timers.clear(); });
    for (const Run& run : runs) {
        EXPECT_GE(run.at, run.due);
    }
}

TYPED_TEST(SerialQueueContract, ADroppedTimerLetsGoOfItsWork) {
    const auto held = std::make_shared<int>();
    const auto released = [&] { return held.use_count() == 2; };  // here and in `work`
    auto& queue = *this->driver.queue;
    int runs = 0;
    const auto work = [&runs, held] { ++runs; };
    queue.after(24h, work).cancel();
    queue.every(24h, work).cancel();
    queue.sync([&] { static_cast<void>(queue.every(1ms, work)); });
    Timer own;
    const auto once = queue.after(1ms, work);
    own = queue.every(1ms, [&, held] {
        if (++runs > 3) {
            own.cancel();
        }
    });
    EXPECT_TRUE(this->comes(released));
    EXPECT_EQ(runs, 4);
    Timer survivor = queue.every(24h, work);
    this->driver.queue.reset();
    EXPECT_TRUE(released()) << "an ended queue keeps work alive";
    survivor.cancel();
}

}  // namespace
}  // namespace sordin
