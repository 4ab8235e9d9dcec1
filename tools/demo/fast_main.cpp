// SPDX-License-Identifier: MIT
// sordin-demo-fast: the demonstration at full speed, by a replay of the broadcast. It uses no audio server
// and no real volume; it shows what the program would do.
#include "demo/commentary.h"
#include "demo/interruption.h"
#include "rig/child_process.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <exception>
#include <optional>
#include <stdexcept>
#include <string>

namespace {

using namespace sordin;
using namespace std::chrono_literals;
using nlohmann::json;

constexpr int failed = 1;
constexpr int misused = 2;

void noteEvent(demo::Commentary& commentary, double time, double& adStart, const json& event) {
    if (event == "started") {
        adStart = time;
        commentary.note(time, "Sordin: an ad began, the volume fades");
    } else if (event.is_object()) {
        std::string reasons;
        for (const json& reason : event.at("ended").at("reasons")) {
            reasons += (reasons.empty() ? "" : ", ") + reason.get<std::string>();
        }
        commentary.note(time, "Sordin: an ad ended after " + json(time - adStart).dump() + " s: " + reasons);
    }
}

void demonstrate(demo::Rules rules, const std::string& program, const std::string& recording,
                 const std::string& labels) {
    const auto broadcast = demo::readBroadcast(recording, labels);
    demo::Commentary commentary(broadcast, rules);
    commentary.introduce(
        "Sordin's detector analyzes it at full speed with sordin-replay. Times are those of the "
        "broadcast, and\nthe volume is the one that Sordin would set.");
    ChildProcess replay({program, "--rules", nameOf(rules), "--hops", recording}, {.readOutput = true});
    demo::Commentary::State state;
    double adStart = 0;
    while (!demo::Interruption::came()) {
        constexpr auto patience = 100ms;  // keeps the program responsive to signals
        const auto line = replay.readLine(patience);
        if (!line && !replay.running()) {
            break;
        }
        if (line) {
            const json hop = json::parse(*line);
            const bool inAd = hop.at("inAd");
            state = {hop.at("confidence").get<float>(), inAd ? 0.0F : 1.0F, inAd};
            const double time = hop.at("t");
            commentary.at(time, state);
            noteEvent(commentary, time, adStart, hop.at("event"));
        }
    }
    if (demo::Interruption::came()) {
        return;
    }
    if (replay.wait(1s) != 0) {
        throw std::runtime_error("the replay failed");  // the replay has printed the reason
    }
    commentary.at(broadcast.duration, state);
    if (const auto other = demo::replayed(program, otherThan(rules), recording, broadcast)) {
        commentary.summarize(*other);
    }
}

}  // namespace

int main(int argc, char** argv) {
    const auto arguments = demo::readArguments(argc, argv, 3);
    if (!arguments) {
        std::fprintf(stderr, "usage: sordin-demo-fast [--tuned] SORDIN-REPLAY BROADCAST LABELS\n");
        return misused;
    }
    const demo::Interruption interruption;
    try {
        const auto& [rules, rest] = *arguments;
        demonstrate(rules, rest[0], rest[1], rest[2]);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "sordin-demo-fast: %s\n", error.what());
        return failed;
    }
    return 0;
}
