// SPDX-License-Identifier: MIT
#include "platform/call_detector.h"
#include "support/manual_serial_queue.h"

#include <gmock/gmock.h>

namespace sordin {
namespace {

using Kind = ApplicationStream::Kind;
using namespace std::chrono_literals;

ApplicationStream stream(Kind kind, const std::string& program) {
    return {kind, program, {}, program};
}

TEST(CallDetector, TellsCallsByTheStreamsOfOneProgram) {
    const auto plays = stream(Kind::plays, "a");
    const auto records = stream(Kind::records, "a");
    const std::vector<std::pair<std::vector<ApplicationStream>, std::string>> cases{
        {{}, ""},
        {{plays, plays}, ""},
        {{records}, ""},
        {{plays, stream(Kind::records, "b"), stream(Kind::plays, "c")}, ""},
        {{stream(Kind::plays, "c"), records, plays}, "a"},
        {{stream(Kind::playsCall, "b")}, "b"},
        {{plays, records, stream(Kind::playsCall, "b")}, "b"}};
    for (const auto& [streams, program] : cases) {
        const auto call = callAmong(streams);
        EXPECT_EQ(call ? call->program : "", program);
    }
}

TEST(CallDetector, BelievesWhatLastsForASecond) {
    const auto queue = std::make_shared<ManualSerialQueue>("main");
    std::string log;
    CallDetector detector(queue, [&](const auto& call) { log += call ? call->program : "-"; });
    const auto become = [&](const std::string& callers, std::chrono::milliseconds duration) {
        std::vector<ApplicationStream> streams;
        for (const char caller : callers) {
            streams.push_back(stream(Kind::playsCall, {caller}));
        }
        detector.streamsChanged(streams);
        queue->advance(duration);
    };
    become("a", 999ms);
    become("", 5s);
    EXPECT_EQ(log, "");
    become("a", 600ms);
    become("ab", 600ms);  // an additional stream has no effect
    EXPECT_EQ(log, "a");
    become("", 999ms);
    become("a", 5s);
    EXPECT_EQ(log, "a");
    become("b", 1s);
    become("", 1s);
    EXPECT_EQ(log, "ab-");
}

}  // namespace
}  // namespace sordin
