// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <iosfwd>
#include <string>
#include <vector>

namespace sordin::replay {

/// An interval of a recording in seconds from its start; `end` is not before `start`.
struct Interval {
    double start = 0;
    double end = 0;

    [[nodiscard]] double length() const { return end - start; }
};

/// Returns the length of the intersection of two intervals in seconds.
[[nodiscard]] double overlap(const Interval& a, const Interval& b);

/// Reads the real ads from a label track: start, end and label on each line, separated by tabs. If any label
/// begins with "ad" (in any case), only those intervals are ads; otherwise all are. Points and lines that
/// begin with a backslash (audio editors store frequencies there) are skipped; intervals that touch or
/// overlap are merged. The result is in chronological order. Throws InputError with `name` and the line
/// number.
[[nodiscard]] std::vector<Interval> readAdLabels(std::istream& input, const std::string& name);
[[nodiscard]] std::vector<Interval> readAdLabels(const std::filesystem::path& path);

}  // namespace sordin::replay
