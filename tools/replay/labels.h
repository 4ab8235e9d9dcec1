// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <iosfwd>
#include <string>
#include <vector>

namespace sordin::replay {

/// A stretch of a recording, seconds from its start; `end` is not before `start`.
struct Interval {
    double start = 0;
    double end = 0;

    [[nodiscard]] double length() const { return end - start; }
};

/// Seconds that two stretches share.
[[nodiscard]] double overlap(const Interval& a, const Interval& b);

/// Reads where the ads really are from a label track: start, end and label in each line, separated by tabs.
/// When any label begins with "ad" (in any case), only those stretches are ads, otherwise all are. Points and
/// lines that begin with a backslash (audio editors keep frequencies there) are passed over; stretches that
/// touch or overlap become one. In the order of time. Throws InputError, which names `name` and the line.
[[nodiscard]] std::vector<Interval> readAdLabels(std::istream& input, const std::string& name);
[[nodiscard]] std::vector<Interval> readAdLabels(const std::filesystem::path& path);

}  // namespace sordin::replay
