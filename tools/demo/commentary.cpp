// SPDX-License-Identifier: MIT
#include "demo/commentary.h"

#include "replay/replay.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <unistd.h>
#include <utility>

namespace sordin::demo {

namespace {

using namespace std::chrono_literals;

constexpr double lineInterval = 10;  // seconds of the broadcast
constexpr auto drawInterval = 100ms;
const float threshold = replay::Settings().threshold;

// Figures from docs/detection.md, "With and without words": radio at the default sensitivity.
constexpr auto usualText =
    "Usual figures (100 minutes of synthetic radio): the standard rules fade 80 % of the ads and 9.2 % of "
    "the\n"
    "programme, the tuned rules 73 % and 1.4 %. Sordin fades an ad only after it has sounded like one for a\n"
    "while: half of the breaks fade within 4.5 s by the standard rules, within 5.7 s by the tuned ones. "
    "Most\n"
    "of the programme is faded after a break: the volume is back after 14.1 s (half of the breaks), by the\n"
    "tuned rules after 1.5 s. In a broadcast this short, a second is nearly a percent.\n"
    "All figures: docs/detection.md. ./run demo --tuned shows the tuned rules.\n";

/// Formats a time as minutes and seconds, with tenths if `tenths`.
std::string clockText(double time, bool tenths) {
    constexpr double minute = 60;
    constexpr double perSecond = 10;
    const double rounded = tenths ? std::round(time * perSecond) / perSecond : std::round(time);
    const double minutes = std::floor(rounded / minute);
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), tenths ? "%.0f:%04.1f" : "%.0f:%02.0f", minutes,
                  rounded - minute * minutes);
    return text.data();
}

std::string percentText(std::optional<float> share) {
    constexpr float percent = 100;
    return share ? std::to_string(std::lround(*share * percent)) + " %" : "?";
}

/// Returns a bar for the confidence with a mark at the threshold.
std::string bar(float confidence) {
    constexpr float cells = 30;
    const auto full = static_cast<std::size_t>(std::lround(confidence * cells));
    std::string text(static_cast<std::size_t>(cells), '.');
    text.replace(0, full, full, '#');
    text[static_cast<std::size_t>(threshold * cells)] = '|';
    return "[" + text + "]";
}

bool canRewriteLines() {
    const char* terminal = std::getenv("TERM");
    return isatty(STDOUT_FILENO) == 1 && terminal != nullptr && std::string_view(terminal) != "dumb";
}

}  // namespace

Commentary::Commentary(Broadcast broadcast, Rules rules)
    : broadcast_(std::move(broadcast)),
      rules_(rules),
      terminal_(canRewriteLines()),
      nextLine_(lineInterval) {}

Commentary::~Commentary() {
    wipeMovingLine();
}

void Commentary::introduce(const std::string& manner) const {
    std::printf("A broadcast of %s minutes, made on this machine: talk, music and commercials.\n%s\n",
                clockText(broadcast_.duration, false).c_str(), manner.c_str());
    if (!broadcast_.breaks.empty()) {
        const replay::Interval& first = broadcast_.breaks.front();
        std::printf("The first break begins at %s and lasts %.0f s.\n", clockText(first.start, false).c_str(),
                    first.length());
    }
    std::printf(
        "Watch the confidence: it rises during commercials, and the volume fades when it has stayed above\n"
        "%s for a moment. Expect the fade some seconds after a break begins, and the restored volume some\n"
        "seconds after it ends.\n\n",
        percentText(threshold).c_str());
    std::fflush(stdout);
}

void Commentary::at(double time, const State& state) {
    noteBreaks(time);
    count(time);
    state_ = state;
    last_ = time;
    showState(time);
}

void Commentary::note(double time, const std::string& text) {
    wipeMovingLine();
    std::printf("%7s  %s\n", clockText(time, true).c_str(), text.c_str());
    std::fflush(stdout);
}

void Commentary::summarize(const Faded& byOtherRules) {
    wipeMovingLine();
    const auto share = [](double part, double whole) { return whole > 0 ? 100 * part / whole : 0; };
    const auto print = [&](const std::string& rules, const Faded& faded) {
        std::printf(
            "%s: %.0f of %.0f seconds of ads (%.0f %%), %.0f of %.0f seconds of programme (%.0f %%)\n",
            rules.c_str(), faded.ads, heard_.ads, share(faded.ads, heard_.ads), faded.programme,
            heard_.programme, share(faded.programme, heard_.programme));
    };
    std::printf("\nFaded\n");
    print("  by the " + nameOf(rules_) + " rules, as shown", faded_);
    print("  by the " + nameOf(otherThan(rules_)) + " rules, in a replay", byOtherRules);
    std::fputs(usualText, stdout);
    std::fflush(stdout);
}

void Commentary::noteBreaks(double time) {
    for (const replay::Interval& each : broadcast_.breaks) {
        if (last_ < each.start && time >= each.start) {
            note(each.start, "Broadcast: commercials begin");
        }
        if (last_ < each.end && time >= each.end) {
            note(each.end, "Broadcast: the programme continues");
        }
    }
}

void Commentary::count(double time) {
    double ads = 0;
    for (const replay::Interval& each : broadcast_.breaks) {
        ads += replay::overlap(each, {last_, time});
    }
    const Faded passed{ads, time - last_ - ads};
    heard_.ads += passed.ads;
    heard_.programme += passed.programme;
    if (state_.faded) {
        faded_.ads += passed.ads;
        faded_.programme += passed.programme;
    }
}

void Commentary::showState(double time) {
    const std::string volume = percentText(state_.volume);
    if (terminal_) {
        const auto now = std::chrono::steady_clock::now();
        if (now - drawn_ >= drawInterval) {
            drawn_ = now;
            moving_ = true;
            std::printf("\r%7s  confidence %5s %s volume %5s\033[K", clockText(time, true).c_str(),
                        percentText(state_.confidence).c_str(), bar(state_.confidence.value_or(0)).c_str(),
                        volume.c_str());
            std::fflush(stdout);
        }
    } else if (time >= nextLine_) {
        nextLine_ += lineInterval;
        note(time, "confidence " + percentText(state_.confidence) + ", volume " + volume);
    }
}

void Commentary::wipeMovingLine() {
    if (std::exchange(moving_, false)) {
        std::fputs("\r\033[K", stdout);
        std::fflush(stdout);
    }
}

}  // namespace sordin::demo
