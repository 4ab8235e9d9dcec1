// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <sstream>
#include <string>

namespace sordin {

/// The float that is nearest, also where no float is near: casting that would be undefined.
[[nodiscard]] inline float nearestFloat(double value) {
    constexpr auto most = static_cast<double>(std::numeric_limits<float>::max());
    return static_cast<float>(std::isnan(value) ? value : std::clamp(value, -most, most));
}

/// A finite decimal number with nothing behind it, written with a point whatever the locale; none otherwise.
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
