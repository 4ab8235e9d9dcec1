// SPDX-License-Identifier: MIT
#pragma once

namespace sordin::demo {

/// Keeps the signals that ask a program to end (SIGINT, SIGTERM, SIGHUP, and SIGPIPE when nobody reads the
/// output any more) from ending it before it has cleaned up. One at a time; make it first in main().
class Interruption {
public:
    Interruption();
    ~Interruption();  ///< ends the process by the signal that has come, if one has
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;

    /// Whether one has come. Any thread.
    [[nodiscard]] static bool came();
};

}  // namespace sordin::demo
