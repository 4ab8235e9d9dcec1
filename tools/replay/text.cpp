// SPDX-License-Identifier: MIT
#include "replay/text.h"

#include <array>
#include <cmath>
#include <cstdarg>
#include <cstdio>

namespace sordin::replay {

std::string formatted(const char* format, ...) {
    std::array<char, 256> text;
    va_list arguments;
    va_start(arguments, format);
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): the check does not recognize va_start
    std::vsnprintf(text.data(), text.size(), format, arguments);
    va_end(arguments);
    return text.data();
}

int percent(double share) {
    return static_cast<int>(share * 100);
}

std::string timeText(double seconds) {
    const auto tenths = std::llround(seconds * 10);
    const long long whole = tenths / 10;
    const std::string end = formatted("%02lld.%lld", whole % 60, tenths % 10);
    if (whole < 3600) {
        return formatted("%lld:", whole / 60) + end;
    }
    return formatted("%lld:%02lld:", whole / 3600, whole / 60 % 60) + end;
}

}  // namespace sordin::replay
