// SPDX-License-Identifier: MIT
// sordin-volume-guard FOLDER: restores the volume if the program dies. Only the program starts it;
// guard_process.h describes its guarantees. It runs as long as the program, so it uses no audio library, no
// second thread and no connection except the one to the program. sordin-volume-restorer contains the code for
// audio servers.
#include "guard/guard_messages.h"
#include "guard/guard_start.h"
#include "support/file_descriptor.h"
#include "support/program_path.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <exception>
#include <fcntl.h>
#include <iostream>
#include <optional>
#include <poll.h>
#include <string>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using namespace sordin;
constexpr auto restorerName = "sordin-volume-restorer";

/// Ignores the signals that end a session, and SIGPIPE, which a write to an audio server that has ended would
/// raise. The restorer inherits this.
void ignoreSignals() {
    sigset_t ignored;
    sigemptyset(&ignored);
    for (const int each : guard_start::heldBackSignals) {
        std::signal(each, SIG_IGN);
        sigaddset(&ignored, each);
    }
    sigprocmask(SIG_UNBLOCK, &ignored, nullptr);
}

/// Reads all available messages into `duck`. Returns false if the connection is closed.
bool receive(std::optional<DuckInForce>& duck) {
    std::array<char, longestGuardMessage> text;
    while (true) {
        const auto length = recv(guard_start::messages, text.data(), text.size(), MSG_DONTWAIT | MSG_TRUNC);
        if (length > 0 && static_cast<std::size_t>(length) <= text.size()) {
            static_cast<void>(readGuardMessage({text.data(), static_cast<std::size_t>(length)}, duck));
        } else if (length == 0 || (length < 0 && errno != EINTR)) {
            return length < 0 && errno == EAGAIN;
        }
    }
}

/// Waits until the program has ended or no longer needs a guard. Returns the duck that was then in force, if
/// any.
std::optional<DuckInForce> watchProgram() {
    std::optional<DuckInForce> duck;
    std::array<pollfd, 2> sources{{{guard_start::program, POLLIN, 0}, {guard_start::messages, POLLIN, 0}}};
    auto& [program, messages] = sources;
    while (true) {
        if (poll(sources.data(), sources.size(), -1) < 0 && errno != EINTR) {
            return std::nullopt;
        }
        // Check `gone` first and read the messages after that, so that the last message is not missed.
        const bool gone = program.revents != 0;
        if ((gone || messages.revents != 0) && !receive(duck)) {
            messages.fd = -1;
            if (!duck) {
                return std::nullopt;
            }
        }
        if (gone) {
            return duck;
        }
    }
}

/// Replaces this process by sordin-volume-restorer, which restores the device of `duck`. Returns only on
/// failure.
void restore(const FileDescriptor& restorer, std::string folder, const DuckInForce& duck) {
    std::string name = restorerName;
    std::string message = toGuardMessage(duck);
    const std::array<char*, 4> arguments{name.data(), folder.data(), message.data(), nullptr};
    fexecve(restorer.get(), arguments.data(), environ);
    std::cerr << "sordin-volume-guard: cannot run " << name << '\n';
}

bool calledByProgram() {
    struct stat messages {};
    return fstat(guard_start::messages, &messages) == 0 && S_ISSOCK(messages.st_mode);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2 || !calledByProgram()) {
        std::cerr << "sordin-volume-guard: only Sordin starts this program\n";
        return 2;
    }
    ignoreSignals();
    try {
        // Open the restorer now, so that this version can run even if the files are replaced or removed
        // later.
        const auto beside = programPath(argv[0]).parent_path() / restorerName;
        const FileDescriptor restorer(open(beside.c_str(), O_PATH | O_CLOEXEC));
        if (!restorer.valid()) {
            std::cerr << "sordin-volume-guard: cannot open " << beside << '\n';
            return 1;
        }
        for (const int ours : {guard_start::program, guard_start::messages}) {
            fcntl(ours, F_SETFD, FD_CLOEXEC);
        }
        if (const auto duck = watchProgram()) {
            restore(restorer, argv[1], *duck);
            return 1;
        }
    } catch (const std::exception& error) {
        std::cerr << "sordin-volume-guard: " << error.what() << '\n';
        return 1;
    }
    return 0;
}
