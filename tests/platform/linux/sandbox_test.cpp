// SPDX-License-Identifier: MIT
#include "rig/child_process.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <map>
#include <sstream>

namespace sordin {
namespace {

using namespace std::chrono_literals;
using Results = std::map<std::string, std::string>;

class SandboxTest : public testing::Test {
protected:
    void SetUp() override {
        own = read();
        inherited = read();
        const int error = std::stoi(own.at("installed"));
        if (error == ENOSYS || error == EINVAL || error == EPERM) {
            GTEST_SKIP() << "this system has no seccomp filters: error " << error;
        }
        ASSERT_EQ(error, 0);
        ASSERT_FALSE(inherited.empty());
    }

    Results own;        // of the process that installed it
    Results inherited;  // of a program that this started

private:
    Results read() {
        Results results;
        while (const auto line = probe_.readLine(60s)) {
            if (*line == "end") {
                break;
            }
            std::istringstream words(*line);
            std::string name;
            words >> name >> results[name];
        }
        return results;
    }

    ChildProcess probe_{{SORDIN_SANDBOX_PROBE}, {.readOutput = true}};
};

TEST_F(SandboxTest, NoFamilyButTwoIsLeft) {
    const auto refused = std::to_string(EAFNOSUPPORT);
    for (const Results& results : {own, inherited}) {
        for (int family = 0; family < 64; ++family) {
            const auto number = std::to_string(family);
            const bool allowed = family == AF_UNIX || family == AF_NETLINK;
            EXPECT_EQ(results.at("family-" + number), allowed ? "ok" : refused) << number;
            EXPECT_EQ(results.at("high-" + number), refused) << number;
            EXPECT_EQ(results.at("sign-" + number), refused) << number;
        }
        EXPECT_EQ(results.at("family--1"), refused);
        EXPECT_EQ(results.at("thread"), refused);
        EXPECT_EQ(results.at("pair-unix"), "ok");
        EXPECT_EQ(results.at("pair-inet"), refused);
        EXPECT_EQ(results.at("connect"), refused);
        EXPECT_EQ(results.at("resolve"), "failed");
    }
}

TEST_F(SandboxTest, NothingGoesAroundTheCall) {
    const auto missing = std::to_string(ENOSYS);
    for (const Results& results : {own, inherited}) {
        EXPECT_EQ(results.at("io-uring"), missing);
        if (results.count("x32") > 0) {
            EXPECT_EQ(results.at("x32"), missing);
            EXPECT_EQ(results.at("int-80"), missing);
        }
        EXPECT_EQ(results.at("no-new-privileges"), "1");
    }
}

TEST_F(SandboxTest, NothingOfTheMemoryIsDumpedButTheProcessStaysVisible) {
    EXPECT_EQ(own.at("dumps"), "0");
    EXPECT_EQ(own.at("dumpable"), "1") << "else services of the desktop could not tell who asks";
    for (const Results& results : {own, inherited}) {
        EXPECT_EQ(results.at("dump-filter"), "0");
        EXPECT_EQ(results.at("dump-limit"), "0");
    }
}

}  // namespace
}  // namespace sordin
