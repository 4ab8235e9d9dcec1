// SPDX-License-Identifier: MIT
#include "support/system_clock.h"

#include "support/fatal.h"

#include <ctime>

namespace sordin {

namespace {

double read(clockid_t id) {
    timespec time{};
    if (clock_gettime(id, &time) != 0) {
        fatal("cannot read the system clock");
    }
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

double readWall() {
    return read(CLOCK_REALTIME);
}

double readElapsed() {
#ifdef CLOCK_BOOTTIME
    return read(CLOCK_BOOTTIME);
#else
    return read(CLOCK_MONOTONIC);  // includes suspend on systems without CLOCK_BOOTTIME
#endif
}

}  // namespace

SystemClock::SystemClock() : SystemClock(readWall, readElapsed) {}

SystemClock::SystemClock(const Reading& wall, Reading elapsed)
    : elapsed_(std::move(elapsed)), offset_(wall() - elapsed_()) {}

double SystemClock::now() const {
    return offset_ + elapsed_();
}

}  // namespace sordin
