// SPDX-License-Identifier: MIT
#pragma once

#include "support/file_descriptor.h"

#include <QObject>
#include <QSocketNotifier>
#include <functional>

namespace sordin {

/// Turns the termination signals (SIGTERM, SIGINT, SIGHUP) into a call on the main thread. The same signal a
/// second time ends the program at once, in case it hangs. At most one instance may exist.
class TerminationSignals {
public:
    /// `onSignal` is called once, from the event loop. Throws std::system_error if no file descriptor is
    /// left.
    explicit TerminationSignals(std::function<void()> onSignal);
    ~TerminationSignals();
    TerminationSignals(const TerminationSignals&) = delete;
    TerminationSignals& operator=(const TerminationSignals&) = delete;

private:
    struct Pipe {
        FileDescriptor readEnd;
        FileDescriptor writeEnd;
    };
    static Pipe makePipe();

    const Pipe pipe_ = makePipe();
    QSocketNotifier notifier_;
};

}  // namespace sordin
