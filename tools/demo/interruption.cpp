// SPDX-License-Identifier: MIT
#include "demo/interruption.h"

#include <array>
#include <atomic>
#include <csignal>

namespace sordin::demo {

namespace {

constexpr std::array endingSignals{SIGINT, SIGTERM, SIGHUP, SIGPIPE};

// A signal handler can use only globals.
std::atomic<int> received = 0;
static_assert(std::atomic<int>::is_always_lock_free);

void noteSignal(int signal) {
    received = signal;
}

void handle(void (*handler)(int)) {
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    for (const int signal : endingSignals) {
        sigaction(signal, &action, nullptr);
    }
}

}  // namespace

Interruption::Interruption() {
    handle(noteSignal);
}

Interruption::~Interruption() {
    handle(SIG_DFL);
    if (received != 0) {
        std::raise(received);
    }
}

bool Interruption::came() {
    return received != 0;
}

}  // namespace sordin::demo
