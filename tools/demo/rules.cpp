// SPDX-License-Identifier: MIT
#include "demo/rules.h"

#include "demo/interruption.h"
#include "rig/child_process.h"

#include <nlohmann/json.hpp>

#include <chrono>
#include <stdexcept>

namespace sordin::demo {

std::string nameOf(Rules rules) {
    return rules == Rules::tuned ? "tuned" : "standard";
}

Rules otherThan(Rules rules) {
    return rules == Rules::tuned ? Rules::standard : Rules::tuned;
}

std::optional<Arguments> readArguments(int argc, char** argv, std::size_t count) {
    Arguments arguments{Rules::standard, {argv + 1, argv + argc}};
    if (!arguments.rest.empty() && arguments.rest.front() == "--tuned") {
        arguments.rules = Rules::tuned;
        arguments.rest.erase(arguments.rest.begin());
    }
    return arguments.rest.size() == count ? std::optional(arguments) : std::nullopt;
}

std::optional<Faded> replayed(const std::string& program, Rules rules, const std::string& recording,
                              const Broadcast& broadcast) {
    using namespace std::chrono_literals;
    constexpr auto patience = 100ms;  // keeps the program responsive to signals
    ChildProcess replay({program, "--rules", nameOf(rules), "--json", recording}, {.readOutput = true});
    std::optional<std::string> line;
    while (!(line = replay.readLine(patience)) && replay.running()) {
        if (Interruption::came()) {
            return std::nullopt;
        }
    }
    if (!line || replay.wait(1s) != 0) {
        throw std::runtime_error("the replay with the " + nameOf(rules) + " rules failed");
    }
    const auto report = nlohmann::json::parse(*line);
    Faded faded;
    for (const nlohmann::json& ad : report.at("ads")) {
        const replay::Interval found{ad.at("start"), ad.at("end")};
        double ads = 0;
        for (const replay::Interval& each : broadcast.breaks) {
            ads += replay::overlap(each, found);
        }
        faded.ads += ads;
        faded.programme += found.length() - ads;
    }
    return faded;
}

}  // namespace sordin::demo
