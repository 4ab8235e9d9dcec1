// SPDX-License-Identifier: MIT
#include "guard/guard_messages.h"

#include <gmock/gmock.h>

namespace sordin {
namespace {

using Duck = std::optional<DuckInForce>;

const OutputDeviceRecord device{"alsa \"x\"", "headphones", 1.3F, {1, 0.123456789F, 0}};

TEST(GuardMessages, SayWhatIsInForceExactly) {
    for (const Duck& said : {Duck(PendingRestore{0.123456789F, device}), Duck(MutedDevice{device}),
                             Duck(PendingRestore{1, std::nullopt}), Duck()}) {
        Duck heard = MutedDevice{};
        ASSERT_TRUE(readGuardMessage(toGuardMessage(said), heard));
        EXPECT_EQ(heard, said);
    }
    OutputDeviceRecord large = device;
    large.ratios.assign(64, 0.123456789F);
    large.name.assign(1024, '"');
    EXPECT_LT(toGuardMessage(PendingRestore{0.5F, large}).size(), longestGuardMessage);
    large.name = "\xff";
    EXPECT_FALSE(toGuardMessage(MutedDevice{large}).empty()) << "an identifier that is not UTF-8";
}

TEST(GuardMessages, WhatIsDamagedChangesNothing) {
    const std::string whole = toGuardMessage(PendingRestore{0.5F, device});
    Duck heard = MutedDevice{device};
    const auto expectIgnored = [&heard](const std::string& message) {
        EXPECT_FALSE(readGuardMessage(message, heard)) << message;
        EXPECT_EQ(heard, Duck(MutedDevice{device})) << message;
    };
    for (std::size_t length = 0; length < whole.size(); ++length) {
        expectIgnored(whole.substr(0, length));
    }
    for (const char* message :
         {"[]", "null", R"({"volume":"1"})", R"({"volume":1.5,"device":null})", R"({"volume":-1})",
          R"({"muted":true})", R"({"muted":true,"device":null})", R"({"volume":1,"device":7})",
          R"({"volume":1,"device":{}})",
          R"({"volume":1,"device":{"name":"","route":"","reference":1,"ratios":[]}})",
          R"({"volume":1,"device":{"name":"a","route":0,"reference":1,"ratios":[]}})",
          R"({"volume":1,"device":{"name":"a","route":"","reference":0.5,"ratios":[]}})",
          R"({"volume":1,"device":{"name":"a","route":"","reference":1,"ratios":[2]}})",
          R"({"muted":true,"device":{"name":"a","route":"","reference":1,"ratios":{"a":"b"}}})"}) {
        expectIgnored(message);
    }
}

}  // namespace
}  // namespace sordin
