// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <sstream>
#include <string>

namespace sordin {

/// Converts to the nearest float. Values outside the range of float become its limits, because casting them
/// is undefined. NaN stays NaN.
[[nodiscard]] inline float nearestFloat(double value) {
    constexpr auto most = static_cast<double>(std::numeric_limits<float>::max());
    return static_cast<float>(std::isnan(value) ? value : std::clamp(value, -most, most));
}

/// Parses a finite decimal number with a decimal point, independent of the locale. White space around it is
/// allowed. Returns nothing if the text contains anything else.
[[nodiscard]] inline std::optional<double> parseNumber(const std::string& text) {
    std::istringstream input(text);
    input.imbue(std::locale::classic());
    double value = 0;
    if (!(input >> value) || !std::isfinite(value)) {
        return std::nullopt;
    }
    input >> std::ws;
    return input.eof() ? std::optional(value) : std::nullopt;
}

}  // namespace sordin
