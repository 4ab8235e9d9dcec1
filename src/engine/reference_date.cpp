// SPDX-License-Identifier: MIT
#include "engine/reference_date.h"

#include <algorithm>
#include <chrono>
#include <cmath>

namespace sordin {

namespace {

constexpr double unixToReference = 978'307'200;  // from 1 January 1970 to 1 January 2001, seconds
constexpr double earliest = -62'135'596'800;     // start of year 1 and end of year 9999, seconds since 1970
constexpr double latest = 253'402'300'799;

}  // namespace

ReferenceDate currentReferenceDate() {
    const std::chrono::duration<double> sinceUnix = std::chrono::system_clock::now().time_since_epoch();
    return sinceUnix.count() - unixToReference;
}

QDateTime localDateTime(ReferenceDate date) {
    constexpr double milliseconds = 1000;
    const double sinceUnix = std::clamp(date + unixToReference, earliest, latest);
    return QDateTime::fromMSecsSinceEpoch(std::llround(sinceUnix * milliseconds));
}

}  // namespace sordin
