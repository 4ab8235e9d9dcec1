// SPDX-License-Identifier: MIT
#pragma once

namespace sordin::demo {

/// Defers the termination signals (SIGINT, SIGTERM, SIGHUP, and SIGPIPE, which occurs if the reader of the
/// output has ended) until the program has cleaned up. At most one instance; create it at the start of
/// main().
class Interruption {
public:
    Interruption();
    ~Interruption();  ///< if a signal was received, ends the process by it
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;

    /// Whether a signal was received. Any thread.
    [[nodiscard]] static bool came();
};

}  // namespace sordin::demo
