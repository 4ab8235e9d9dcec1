// SPDX-License-Identifier: MIT
#include "app/termination_signals.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace sordin {

namespace {

constexpr std::array endingSignals{SIGTERM, SIGINT, SIGHUP};

// A signal handler can use only globals.
std::atomic<int> signalPipe = -1;
static_assert(std::atomic<int>::is_always_lock_free);

void noteSignal(int /*signal*/) {
    const int saved = errno;
    const char byte = 0;
    // If the pipe is full, a signal is pending already.
    [[maybe_unused]] const ssize_t written = write(signalPipe, &byte, 1);
    errno = saved;
}

void handle(void (*handler)(int)) {
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART | static_cast<int>(SA_RESETHAND);
    for (const int signal : endingSignals) {
        sigaction(signal, &action, nullptr);
    }
}

}  // namespace

TerminationSignals::Pipe TerminationSignals::makePipe() {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
        throw std::system_error(errno, std::generic_category(), "pipe");
    }
    return {FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

TerminationSignals::TerminationSignals(std::function<void()> onSignal)
    : notifier_(pipe_.readEnd.get(), QSocketNotifier::Read) {
    QObject::connect(&notifier_, &QSocketNotifier::activated, &notifier_,
                     [this, onSignal = std::move(onSignal)] {
                         notifier_.setEnabled(false);
                         onSignal();
                     });
    signalPipe = pipe_.writeEnd.get();
    handle(noteSignal);
}

TerminationSignals::~TerminationSignals() {
    handle(SIG_DFL);
    signalPipe = -1;
}

}  // namespace sordin
