// SPDX-License-Identifier: MIT
#include "support/asio_serial_queue.h"

#include <gmock/gmock.h>

#include <array>
#include <atomic>
#include <future>
#include <memory>
#include <pthread.h>
#include <thread>
#include <vector>

namespace sordin {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

constexpr auto deadline = 20s;

/// A flag that work on a queue sets and the test waits for.
class Signal {
public:
    void set() { promise_.set_value(); }
    [[nodiscard]] bool wait() { return future_.wait_for(deadline) == std::future_status::ready; }

private:
    std::promise<void> promise_;
    std::future<void> future_ = promise_.get_future();
};

TEST(AsioSerialQueue, KeepsTheOrderAlsoBetweenThreads) {
    AsioSerialQueue queue("sordin.test");
    std::vector<int> done;
    Signal posted;
    queue.post([&] {
        // Work posted by the work itself runs before what another thread posts after a notification.
        queue.post([&] { done.push_back(1); });
        std::thread([&] { queue.post([&] { done.push_back(2); }); }).join();
        queue.post([&] { done.push_back(3); });
        posted.set();
    });
    ASSERT_TRUE(posted.wait());
    queue.sync([&] { done.push_back(4); });
    EXPECT_THAT(done, ElementsAre(1, 2, 3, 4));
}

TEST(AsioSerialQueue, RunsOnOneNamedThreadAndNestsSync) {
    AsioSerialQueue queue("sordin.a-label-longer-than-the-kernel-takes");
    EXPECT_FALSE(queue.isCurrent());
    int nested = 0;
    queue.sync([&] {
        EXPECT_TRUE(queue.isCurrent());
        std::array<char, 32> name{};
        pthread_getname_np(pthread_self(), name.data(), name.size());
        EXPECT_STREQ(name.data(), "sordin.a-label-");
        queue.sync([&] { ++nested; });
    });
    EXPECT_EQ(nested, 1);
}

TEST(AsioSerialQueue, TakesWorkFromManyThreadsOnePieceAtATime) {
    constexpr int threads = 8;
    constexpr int each = 2000;
    int count = 0;  // unprotected, because the queue serializes the access
    {
        AsioSerialQueue queue("sordin.test", QualityOfService::utility);
        std::vector<std::thread> posters;
        for (int i = 0; i < threads; ++i) {
            posters.emplace_back([&] {
                for (int j = 0; j < each; ++j) {
                    queue.post([&] { ++count; });
                }
            });
        }
        for (std::thread& poster : posters) {
            poster.join();
        }
    }  // the destructor runs posted work
    EXPECT_EQ(count, threads * each);
}

TEST(AsioSerialQueue, EndRunsPostedWorkAndDropsWhatComesLater) {
    auto queue = std::make_unique<AsioSerialQueue>("sordin.test");
    Signal begun;
    Signal proceed;
    std::vector<int> done;
    const auto held = std::make_shared<int>();
    auto timer = queue->every(1ms, [held] {});
    auto far = queue->after(24h, [held] {});
    queue->post([&] {
        begun.set();
        EXPECT_TRUE(proceed.wait());
        done.push_back(1);
    });
    queue->post([&, held] { done.push_back(2); });
    // Work that posts itself again must not keep the queue alive while the queue ends.
    const std::function<void()> again = [&again, raw = queue.get()] { raw->post(again); };
    queue->post(again);
    ASSERT_TRUE(begun.wait());
    proceed.set();
    queue.reset();
    EXPECT_THAT(done, ElementsAre(1, 2));
    EXPECT_EQ(held.use_count(), 1) << "an ended queue keeps work alive";
    timer.cancel();
}

TEST(AsioSerialQueue, MayBeDestroyedByItsOwnWork) {
    for (int round = 0; round < 200; ++round) {
        auto queue = std::make_shared<AsioSerialQueue>("sordin.test");
        const auto witness = std::make_shared<std::atomic<int>>(0);
        Signal gone;
        std::promise<void> start;
        auto timer = queue->every(1ms, [witness] { ++*witness; });
        queue->post([&gone, &queue, ready = start.get_future().share(), witness] {
            ready.wait();
            queue.reset();
            witness->store(1000);
            gone.set();
        });
        queue->post(
            [witness] { *witness += 1'000'000; });  // still waiting when the queue ends, so it is dropped
        start.set_value();
        ASSERT_TRUE(gone.wait());
        timer.cancel();
        const auto end = std::chrono::steady_clock::now() + deadline;
        while (witness.use_count() > 1) {  // until the thread has released everything
            ASSERT_LT(std::chrono::steady_clock::now(), end);
            std::this_thread::yield();
        }
        EXPECT_EQ(*witness, 1000);
    }
}

TEST(AsioSerialQueue, ARepeatingTimerLeavesOutWhatItMissed) {
    constexpr auto interval = 10ms;
    AsioSerialQueue queue("sordin.test");
    Signal enough;
    int runs = 0;
    std::chrono::steady_clock::time_point released;
    Timer timer;
    queue.sync([&] {
        timer = queue.every(interval, [&] {
            if (++runs == 3) {
                timer.cancel();
                enough.set();
            }
        });
        std::this_thread::sleep_for(30 * interval);
        released = std::chrono::steady_clock::now();
    });
    ASSERT_TRUE(enough.wait());
    // One shot for all missed ones, then two on time. A slow machine only lengthens this.
    EXPECT_GT(std::chrono::steady_clock::now() - released, interval);
}

}  // namespace
}  // namespace sordin
