// SPDX-License-Identifier: MIT
#pragma once

#include <cmath>
#include <optional>
#include <sstream>
#include <string>

namespace sordin {

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
