// SPDX-License-Identifier: MIT
#pragma once

#include "demo/broadcast.h"
#include "demo/rules.h"

#include <chrono>
#include <optional>
#include <string>

namespace sordin::demo {

/// Prints the demonstration to standard output: what to watch, the events, and a summary of what was right.
/// On a terminal, the last line is updated in place; otherwise a line is printed every ten seconds of the
/// broadcast. All times are in seconds of the broadcast.
class Commentary {
public:
    struct State {
        std::optional<float> confidence;  ///< 0 to 1; none if unknown
        std::optional<float> volume;      ///< of the output device, 0 to 1; none if unknown
        bool faded = false;               ///< whether the volume is down
    };

    /// `rules` are the rules that the demonstration uses.
    Commentary(Broadcast broadcast, Rules rules);
    ~Commentary();
    Commentary(const Commentary&) = delete;
    Commentary& operator=(const Commentary&) = delete;

    /// Prints the length of the broadcast, the time of its first break, and what to watch. `manner` describes
    /// in whole sentences how the demonstration runs.
    void introduce(const std::string& manner) const;

    /// Sets the state from `time` until the next call. Call it often, in chronological order.
    void at(double time, const State& state);

    /// Prints a line about an event at `time`.
    void note(double time, const std::string& text);

    /// Prints what was faded until the last at(), what the other set of rules fades, and the usual figures
    /// with an explanation.
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
    double nextLine_;  // time of the next line if not on a terminal
    std::chrono::steady_clock::time_point drawn_{};
    bool moving_ = false;  // whether the line to update is on the screen
    Faded heard_;          // all seconds so far, faded or not
    Faded faded_;
};

}  // namespace sordin::demo
