// SPDX-License-Identifier: MIT
#include "engine/duration_text.h"

#include <algorithm>
#include <cmath>

namespace sordin {

namespace {

constexpr long long minute = 60;
constexpr long long hour = 3600;

QString twoDigits(long long number) {
    return QStringLiteral("%1").arg(number, 2, 10, QLatin1Char('0'));
}

}  // namespace

QString formatDuration(double seconds) {
    constexpr double most = 1e15;  // far above any sum of ads, within the range of long long
    const long long whole = std::isnan(seconds) ? 0 : std::llround(std::clamp(seconds, -most, most));
    if (whole < minute) {
        return QStringLiteral("%1s").arg(whole);
    }
    if (whole < hour) {
        return QStringLiteral("%1m %2s").arg(whole / minute).arg(twoDigits(whole % minute));
    }
    return QStringLiteral("%1h %2m").arg(whole / hour).arg(twoDigits(whole % hour / minute));
}

}  // namespace sordin
