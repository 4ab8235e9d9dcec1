// SPDX-License-Identifier: MIT
#include "rig/child_process.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <map>
#include <sstream>

namespace sordin {
namespace {

using namespace std::chrono_literals;
using Results = std::map<std::string, std::string>;

/// The results of the probe's next process.
Results read(ChildProcess& probe) {
    Results results;
    while (const auto line = probe.readLine(60s)) {
        if (*line == "end") {
            break;
        }
        std::istringstream words(*line);
        std::string name;
        words >> name >> results[name];
    }
    return results;
}

TEST(Sandbox, LeavesNoWayToANetworkAndDumpsNoMemory) {
    ChildProcess probe({SORDIN_SANDBOX_PROBE}, {.readOutput = true});
    const Results own = read(probe);        // the process that installed the filter
    const Results inherited = read(probe);  // a program that this process started
    const int error = std::stoi(own.at("installed"));
    if (error == ENOSYS || error == EINVAL || error == EPERM) {
        GTEST_SKIP() << "this system has no seccomp filters: error " << error;
    }
    ASSERT_EQ(error, 0);
    EXPECT_EQ(own.at("dumps"), "0");
    EXPECT_EQ(own.at("dumpable"), "1") << "desktop services could not identify the process otherwise";
    const auto refused = std::to_string(EAFNOSUPPORT);
    const auto missing = std::to_string(ENOSYS);
    Results expected{{"family--1", refused}, {"thread", refused},        {"pair-unix", "ok"},
                     {"pair-inet", refused}, {"connect", refused},       {"resolve", "failed"},
                     {"io-uring", missing},  {"no-new-privileges", "1"}, {"dump-filter", "0"},
                     {"dump-limit", "0"}};
    for (int family = 0; family < 64; ++family) {
        const auto number = std::to_string(family);
        expected["family-" + number] = family == AF_UNIX || family == AF_NETLINK ? "ok" : refused;
        expected["high-" + number] = expected["sign-" + number] = refused;
    }
    if (own.count("x32") > 0) {
        expected["x32"] = expected["int-80"] = missing;
    }
    for (Results results : {own, inherited}) {
        for (const auto& [name, result] : expected) {
            EXPECT_EQ(results[name], result) << name;
        }
    }
}

}  // namespace
}  // namespace sordin
