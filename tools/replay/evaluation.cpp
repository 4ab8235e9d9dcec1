// SPDX-License-Identifier: MIT
#include "replay/evaluation.h"

#include <algorithm>
#include <cmath>

namespace sordin::replay {

namespace {

void clip(std::vector<Interval>& intervals, double duration) {
    for (Interval& interval : intervals) {
        interval.start = std::clamp(interval.start, 0.0, duration);
        interval.end = std::clamp(interval.end, 0.0, duration);
    }
    std::erase_if(intervals, [](const Interval& interval) { return interval.length() <= 0; });
}

double totalLength(const std::vector<Interval>& intervals) {
    double sum = 0;
    for (const Interval& interval : intervals) {
        sum += interval.length();
    }
    return sum;
}

double totalOverlap(const std::vector<Interval>& a, const std::vector<Interval>& b) {
    double sum = 0;
    for (const Interval& one : a) {
        for (const Interval& other : b) {
            sum += overlap(one, other);
        }
    }
    return sum;
}

std::optional<double> ratio(double part, double whole) {
    return whole > 0 ? std::optional(part / whole) : std::nullopt;
}

std::size_t countMatches(const std::vector<Interval>& found, const std::vector<Interval>& truth) {
    struct Pair {
        double likeness;
        std::size_t found;
        std::size_t truth;
    };
    std::vector<Pair> pairs;
    for (std::size_t f = 0; f < found.size(); ++f) {
        for (std::size_t t = 0; t < truth.size(); ++t) {
            const double shared = overlap(found[f], truth[t]);
            const double likeness = shared / (found[f].length() + truth[t].length() - shared);
            if (likeness >= 0.5) {
                pairs.push_back({likeness, f, t});
            }
        }
    }
    std::stable_sort(pairs.begin(), pairs.end(),
                     [](const Pair& a, const Pair& b) { return a.likeness > b.likeness; });
    std::vector<bool> foundTaken(found.size());
    std::vector<bool> truthTaken(truth.size());
    std::size_t matches = 0;
    for (const Pair& pair : pairs) {
        if (!foundTaken[pair.found] && !truthTaken[pair.truth]) {
            foundTaken[pair.found] = truthTaken[pair.truth] = true;
            ++matches;
        }
    }
    return matches;
}

double percentile(const std::vector<double>& sorted, double share) {
    const double position = share * static_cast<double>(sorted.size() - 1);
    const auto below = static_cast<std::size_t>(position);
    const std::size_t above = std::min(below + 1, sorted.size() - 1);
    return std::lerp(sorted[below], sorted[above], position - static_cast<double>(below));
}

std::optional<Delays> delays(std::vector<double> seconds) {
    if (seconds.empty()) {
        return std::nullopt;
    }
    std::sort(seconds.begin(), seconds.end());
    return Delays{percentile(seconds, 0.5), percentile(seconds, 0.9)};
}

std::vector<Interval> joined(const std::vector<Interval>& ads) {
    std::vector<Interval> breaks;
    for (const Interval& ad : ads) {
        if (!breaks.empty() && ad.start - breaks.back().end < breakGap) {
            breaks.back().end = ad.end;
        } else {
            breaks.push_back(ad);
        }
    }
    return breaks;
}

/// Measures the reaction to and the late release of each real interval that was found at least in part.
void measureDelays(const std::vector<Interval>& found, const std::vector<Interval>& truth, double duration,
                   EventFigures& result) {
    std::vector<double> reactions;
    std::vector<double> releases;
    for (std::size_t t = 0; t < truth.size(); ++t) {
        const Interval& real = truth[t];
        const auto touches = [&](const Interval& interval) { return overlap(interval, real) > 0; };
        const auto first = std::find_if(found.begin(), found.end(), touches);
        if (first == found.end()) {
            continue;
        }
        const auto last = std::find_if(found.rbegin(), found.rend(), touches);
        // A found interval that reaches into the next real one is not late there.
        const double next = t + 1 < truth.size() ? truth[t + 1].start : duration;
        reactions.push_back(std::max(0.0, first->start - real.start));
        releases.push_back(std::max(0.0, std::min(last->end, next) - real.end));
    }
    result.reaction = delays(std::move(reactions));
    result.lateRelease = delays(std::move(releases));
}

EventFigures eventFigures(const std::vector<Interval>& found, const std::vector<Interval>& truth,
                          double duration) {
    const auto matches = static_cast<double>(countMatches(found, truth));
    EventFigures result;
    result.precision = ratio(matches, static_cast<double>(found.size()));
    result.recall = ratio(matches, static_cast<double>(truth.size()));
    if (!found.empty() || !truth.empty()) {
        // (1 + b^2) matches / ((1 + b^2) matches + b^2 missed + false) with b = 0.5
        const double missed = static_cast<double>(truth.size()) - matches;
        const double spurious = static_cast<double>(found.size()) - matches;
        result.f05 = 1.25 * matches / (1.25 * matches + 0.25 * missed + spurious);
    }
    measureDelays(found, truth, duration, result);
    return result;
}

}  // namespace

Evaluation evaluate(const std::vector<Interval>& found, std::vector<Interval> truth, double duration) {
    clip(truth, duration);
    const double foundSeconds = totalLength(found);
    const double adSeconds = totalLength(truth);
    const double shared = totalOverlap(found, truth);

    Evaluation result;
    result.precision = ratio(shared, foundSeconds);
    result.recall = ratio(shared, adSeconds);
    result.falsePerHour = ratio((foundSeconds - shared) * 3600, duration - adSeconds);
    result.breaks = eventFigures(found, joined(truth), duration);
    result.ads = eventFigures(found, truth, duration);
    return result;
}

}  // namespace sordin::replay
