// SPDX-License-Identifier: MIT
#pragma once

#include "support/clock.h"

#include <functional>

namespace sordin {

/// The program's clock: the wall clock read once, at construction, plus the time that has passed since,
/// counted by a clock that runs on during suspend and that nobody can set. A correction of the wall clock
/// therefore never shows here; a step back would look like an ad that ended in the future.
class SystemClock final : public Clock {
public:
    using Reading = std::function<double()>;

    SystemClock();

    /// Over other clocks, which give seconds: `elapsed` counts what shall count.
    SystemClock(const Reading& wall, Reading elapsed);

    [[nodiscard]] double now() const override;

private:
    Reading elapsed_;
    double offset_;
};

}  // namespace sordin
