// SPDX-License-Identifier: MIT
#include "replay/labels.h"

#include "replay/input_file.h"
#include "support/numbers.h"

#include <algorithm>
#include <cctype>

namespace sordin::replay {

namespace {

struct Label {
    Interval interval;
    std::string text;

    [[nodiscard]] bool saysAd() const {
        return text.size() >= 2 && std::tolower(static_cast<unsigned char>(text[0])) == 'a' &&
               std::tolower(static_cast<unsigned char>(text[1])) == 'd';
    }
};

Label parseLabel(const std::string& line, const std::string& where) {
    const std::size_t first = line.find('\t');
    if (first == std::string::npos) {
        throw InputError(where + ": expected start, end and label separated by tabs");
    }
    const std::size_t second = std::min(line.find('\t', first + 1), line.size());
    const auto start = parseNumber(line.substr(0, first));
    const auto end = parseNumber(line.substr(first + 1, second - first - 1));
    if (!start || !end || *end < *start) {
        throw InputError(where + ": start and end are not two times in ascending order");
    }
    return {{*start, *end}, second < line.size() ? line.substr(second + 1) : std::string()};
}

std::vector<Interval> merged(std::vector<Interval> intervals) {
    std::sort(intervals.begin(), intervals.end(),
              [](const auto& a, const auto& b) { return a.start < b.start; });
    std::vector<Interval> result;
    for (const Interval& interval : intervals) {
        if (!result.empty() && interval.start <= result.back().end) {
            result.back().end = std::max(result.back().end, interval.end);
        } else {
            result.push_back(interval);
        }
    }
    return result;
}

}  // namespace

double overlap(const Interval& a, const Interval& b) {
    return std::max(0.0, std::min(a.end, b.end) - std::max(a.start, b.start));
}

std::vector<Interval> readAdLabels(std::istream& input, const std::string& name) {
    std::vector<Label> labels;
    forEachLine(input, name, [&](const std::string& line, const std::string& where) {
        if (line.front() != '\\') {
            labels.push_back(parseLabel(line, where));
        }
    });
    const bool named = std::any_of(labels.begin(), labels.end(), [](const Label& l) { return l.saysAd(); });
    std::vector<Interval> ads;
    for (const Label& label : labels) {
        if (label.interval.length() > 0 && (!named || label.saysAd())) {
            ads.push_back(label.interval);
        }
    }
    return merged(std::move(ads));
}

std::vector<Interval> readAdLabels(const std::filesystem::path& path) {
    auto input = openInput(path);
    return readAdLabels(input, path.string());
}

}  // namespace sordin::replay
