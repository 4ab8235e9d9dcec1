// SPDX-License-Identifier: MIT
// sordin-volume-guard FOLDER: has the volume given back if the program dies. Started by the program alone;
// what it promises is in guard_process.h. It waits for as long as the program runs, so it has no library, no
// thread and no connection but that to the program; what knows audio servers is sordin-volume-restorer.
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

/// Those that end a session, and SIGPIPE: the audio server may go while it is being told something.
void ignoreSignals() {
    sigset_t ignored;
    sigemptyset(&ignored);
    for (const int each : guard_start::heldBackSignals) {
        std::signal(each, SIG_IGN);
        sigaddset(&ignored, each);
    }
    sigprocmask(SIG_UNBLOCK, &ignored, nullptr);
}

/// Takes in the messages that are there. False if no more can come.
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

/// Returns when the program is gone, or has no more use for a guard; what was in force then.
std::optional<DuckInForce> watchProgram() {
    std::optional<DuckInForce> duck;
    std::array<pollfd, 2> sources{{{guard_start::program, POLLIN, 0}, {guard_start::messages, POLLIN, 0}}};
    auto& [program, messages] = sources;
    while (true) {
        if (poll(sources.data(), sources.size(), -1) < 0 && errno != EINTR) {
            return std::nullopt;
        }
        // In this order: what it said last counts.
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

/// Becomes sordin-volume-restorer, which gives back what is in force. Only returns if that fails.
void restore(const FileDescriptor& restorer, std::string folder, const DuckInForce& duck) {
    std::string name = restorerName;
    std::string message = toGuardMessage(duck);
    const std::array<char*, 4> arguments{name.data(), folder.data(), message.data(), nullptr};
    fexecve(restorer.get(), arguments.data(), environ);
    std::cerr << "sordin-volume-guard: " << name << " cannot be run\n";
}

bool calledByProgram() {
    struct stat messages {};
    return fstat(guard_start::messages, &messages) == 0 && S_ISSOCK(messages.st_mode);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2 || !calledByProgram()) {
        std::cerr << "sordin-volume-guard is a part of Sordin and is started by it\n";
        return 2;
    }
    ignoreSignals();
    try {
        // Now, so that the one of this version is there though the program be replaced or removed.
        const auto beside = programPath(argv[0]).parent_path() / restorerName;
        const FileDescriptor restorer(open(beside.c_str(), O_PATH | O_CLOEXEC));
        if (!restorer.valid()) {
            std::cerr << "sordin-volume-guard: there is no " << beside << '\n';
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
