// SPDX-License-Identifier: MIT
#pragma once

#include "demo/broadcast.h"
#include "demo/rules.h"

#include <chrono>
#include <optional>
#include <string>

namespace sordin::demo {

/// Prints the demonstration on standard output: what to watch, what happens when, and how much of it was
/// right. On a terminal the last line is rewritten in place; elsewhere a line is printed every ten seconds of
/// the broadcast. All times are seconds of the broadcast.
class Commentary {
public:
    struct State {
        std::optional<float> confidence;  ///< 0 to 1; none if it is not known
        std::optional<float> volume;      ///< of the output device, 0 to 1; none if it is not known
        bool faded = false;               ///< whether the volume is down
    };

    /// `rules`: those by which the broadcast is heard.
    Commentary(Broadcast broadcast, Rules rules);
    ~Commentary();
    Commentary(const Commentary&) = delete;
    Commentary& operator=(const Commentary&) = delete;

    /// How long the broadcast is, when its first break comes and what to watch. `manner`: whole sentences
    /// that say how it is heard.
    void introduce(const std::string& manner) const;

    /// The state from `time` until the next call. Call often, in the order of time.
    void at(double time, const State& state);

    /// Prints a line about something that happened at `time`.
    void note(double time, const std::string& text);

    /// Prints what was faded until the last at(), what the other set of rules fades, and what is usual and
    /// why.
    void summarize(const Faded& byOtherRules);

private:
    void noteBreaks(double time);
    void count(double time);
    void showState(double time);
    void wipeMovingLine();

    const Broadcast broadcast_;
    const Rules rules_;
    const bool terminal_;
    double last_ = 0;
    State state_;
    double nextLine_;  // off a terminal
    std::chrono::steady_clock::time_point drawn_{};
    bool moving_ = false;  // whether the moving line is on the screen
    Faded heard_;          // all seconds so far, faded or not
    Faded faded_;
};

}  // namespace sordin::demo
