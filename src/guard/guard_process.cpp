// SPDX-License-Identifier: MIT
#include "guard/guard_process.h"

#include "guard/guard_messages.h"
#include "guard/guard_start.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace sordin {

namespace {

/// Duplicates a descriptor to a number outside those of the guard, so that dup2() to these cannot overwrite
/// it.
FileDescriptor moved(const FileDescriptor& file) {
    return FileDescriptor(fcntl(file.get(), F_DUPFD_CLOEXEC, guard_start::firstFreeDescriptor));
}

/// Starts the guard with these two descriptors and none of the others. Returns its process ID, or -1.
pid_t spawned(std::array<std::string, 2> command, const FileDescriptor& program,
              const FileDescriptor& messages) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDWR, 0);
    posix_spawn_file_actions_adddup2(&actions, STDIN_FILENO, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, program.get(), guard_start::program);
    posix_spawn_file_actions_adddup2(&actions, messages.get(), guard_start::messages);
    posix_spawn_file_actions_addclosefrom_np(&actions, guard_start::firstFreeDescriptor);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t heldBack;
    sigemptyset(&heldBack);
    for (const int signal : guard_start::heldBackSignals) {
        sigaddset(&heldBack, signal);
    }
    posix_spawnattr_setsigmask(&attributes, &heldBack);
    sigset_t all;
    sigfillset(&all);
    posix_spawnattr_setsigdefault(&attributes, &all);
    // In a separate session, the guard survives the end of the program's terminal and process group.
    posix_spawnattr_setflags(&attributes,
                             POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSID);
    std::array<char*, 3> arguments{command[0].data(), command[1].data(), nullptr};
    pid_t pid = -1;
    const int error = posix_spawn(&pid, arguments[0], &actions, &attributes, arguments.data(), environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    return error == 0 ? pid : -1;
}

}  // namespace

GuardProcess::GuardProcess(const std::filesystem::path& helper, const std::filesystem::path& folder)
    : helper_(helper), folder_(std::filesystem::absolute(folder)) {
    start();
}

void GuardProcess::inForce(const DuckInForce& duck) {
    if (!tell(duck)) {
        end();
        start();
        static_cast<void>(tell(duck));
    }
}

void GuardProcess::givenBack() {
    if (!tell(std::nullopt)) {
        end();  // without this message the guard would still restore the volume
    }
}

void GuardProcess::start() {
    const FileDescriptor self(static_cast<int>(syscall(SYS_pidfd_open, getpid(), 0)));
    std::array<int, 2> ends{-1, -1};
    if (!self.valid() || socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0) {
        return;
    }
    socket_ = FileDescriptor(ends[0]);
    const FileDescriptor theirs(ends[1]);
    const FileDescriptor program = moved(self);
    const FileDescriptor messages = moved(theirs);
    if (program.valid() && messages.valid()) {
        pid_ = spawned({helper_, folder_}, program, messages);
    }
    if (pid_ < 0) {
        socket_.close();
    }
}

bool GuardProcess::tell(const std::optional<DuckInForce>& duck) const {
    const std::string message = toGuardMessage(duck);
    return socket_.valid() && message.size() <= longestGuardMessage &&
           send(socket_.get(), message.data(), message.size(), MSG_DONTWAIT | MSG_NOSIGNAL) ==
               static_cast<ssize_t>(message.size());
}

void GuardProcess::end() {
    socket_.close();
    if (const pid_t pid = std::exchange(pid_, -1); pid > 0) {
        kill(pid, SIGKILL);
        while (waitpid(pid, nullptr, 0) < 0 && errno == EINTR) {
        }
    }
}

}  // namespace sordin
