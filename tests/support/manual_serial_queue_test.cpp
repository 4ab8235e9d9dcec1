// SPDX-License-Identifier: MIT
#include "support/manual_serial_queue.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace sordin {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

TEST(ManualSerialQueue, RunsWorkInOrderAndOnlyWhenTold) {
    ManualSerialQueue queue("sordin.test");
    std::vector<std::string> done;
    queue.post([&] {
        EXPECT_TRUE(queue.isCurrent());
        done.emplace_back("a");
        queue.post([&] { done.emplace_back("posted by a"); });
        queue.sync([&] { done.emplace_back("nested in a"); });
    });
    queue.post([&] { done.emplace_back("b"); });
    EXPECT_TRUE(done.empty());
    queue.sync([&] { done.emplace_back("sync"); });
    EXPECT_THAT(done, ElementsAre("a", "nested in a", "b", "posted by a", "sync"));
    EXPECT_FALSE(queue.isCurrent());
}

TEST(ManualSerialQueue, TimersFireAtTheirTimesAmongEachOther) {
    ManualSerialQueue queue("sordin.test");
    std::vector<std::string> done;
    Timer then;
    const auto once = queue.after(30ms, [&] {
        done.emplace_back("once");
        then = queue.after(15ms, [&] { done.emplace_back("then"); });  // relative to the time of the first
    });
    Timer again;
    again = queue.every(20ms, [&] {
        done.emplace_back("again");
        queue.post([&] { done.emplace_back("posted"); });
        if (done.size() > 5) {
            again.cancel();
        }
    });
    queue.advance(19ms);
    EXPECT_TRUE(done.empty());
    queue.advance(1ms);
    EXPECT_THAT(done, ElementsAre("again", "posted"));
    queue.advance(1h);
    EXPECT_THAT(done, ElementsAre("again", "posted", "once", "again", "posted", "then", "again", "posted"));
}

}  // namespace
}  // namespace sordin
