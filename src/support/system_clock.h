// SPDX-License-Identifier: MIT
#pragma once

#include "support/clock.h"

#include <functional>

namespace sordin {

/// The program's clock: the wall clock at construction plus the time that has passed since, including
/// suspend. Corrections of the wall clock do not affect it. With a step back, an ad would seem to end in the
/// future.
class SystemClock final : public Clock {
public:
    /// Returns the time of a clock in seconds.
    using Reading = std::function<double()>;

    SystemClock();

    /// For tests: uses other clocks. `wall` is read once, `elapsed` at each call of now().
    SystemClock(const Reading& wall, Reading elapsed);

    [[nodiscard]] double now() const override;

private:
    Reading elapsed_;
    double offset_;
};

}  // namespace sordin
