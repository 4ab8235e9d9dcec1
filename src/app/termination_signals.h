// SPDX-License-Identifier: MIT
#pragma once

#include "support/file_descriptor.h"

#include <QObject>
#include <QSocketNotifier>
#include <functional>

namespace sordin {

/// Turns the signals that ask a program to end (SIGTERM, SIGINT, SIGHUP) into an ordinary call on the main
/// thread. The same one a second time ends the program at once, should the first have got stuck. One at a
/// time.
class TerminationSignals {
public:
    /// `onSignal` is called once, from the event loop. Throws std::system_error if the process has no file
    /// descriptors left.
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
