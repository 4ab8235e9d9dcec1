// SPDX-License-Identifier: MIT
// sandbox_probe [inherited]: installs the network filter and disables memory dumps, tries everything, and
// prints the results
// ("NAME RESULT", one per line: an error number, or ok). It then starts a program that does the same. A
// filter cannot be removed, so the test cannot do this in its own process.
#include "platform/linux/sandbox/network_filter.h"
#include "platform/linux/sandbox/private_memory.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <fstream>
#include <future>
#include <iostream>
#include <netdb.h>
#include <string>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

void tell(const std::string& name, long result) {
    std::cout << name << ' ' << (result < 0 ? std::to_string(errno) : "ok") << '\n';
}

/// A direct system call, because the C library passes only 32 bits.
long rawSocket(std::uint64_t family) {
    return syscall(SYS_socket, family, SOCK_DGRAM, 0);
}

void tryFamilies() {
    constexpr std::uint64_t high = 1;
    for (std::uint64_t family = 0; family < 64; ++family) {
        tell("family-" + std::to_string(family), rawSocket(family));
        tell("high-" + std::to_string(family), rawSocket(high << 32U | family));
        tell("sign-" + std::to_string(family), rawSocket(high << 63U | high << 31U | family));
    }
    tell("family--1", rawSocket(~std::uint64_t{0}));
    std::array<int, 2> pair{};
    tell("pair-unix", socketpair(AF_UNIX, SOCK_SEQPACKET, 0, pair.data()));
    tell("pair-inet", socketpair(AF_INET, SOCK_STREAM, 0, pair.data()));
}

#ifdef __x86_64__
/// The result of socket(AF_INET, SOCK_DGRAM, 0) from a 32-bit program: an error, or 0. Runs in a child
/// process, because systems without 32-bit support end the process.
int resultOf32Bits() {
    const pid_t child = fork();
    if (child == 0) {
        constexpr int socketOf32Bits = 359;
        int result = 0;
        asm volatile("int $0x80"
                     : "=a"(result)
                     : "a"(socketOf32Bits), "b"(AF_INET), "c"(SOCK_DGRAM), "d"(0)
                     : "memory");
        _exit(result < 0 ? -result : 0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : ENOSYS;
}
#endif

/// Ways around socket(2).
void tryDetours() {
    std::array<std::uint64_t, 15> parameters{};  // io_uring_params
    tell("io-uring", syscall(SYS_io_uring_setup, 1, parameters.data()));
#ifdef __x86_64__
    std::cout << "int-80 " << resultOf32Bits() << '\n';
    constexpr long x32 = 0x40000000;  // the ABI with 32-bit pointers
    tell("x32", syscall(x32 | SYS_socket, AF_INET, SOCK_DGRAM, 0));
#endif
}

/// A name lookup by a library.
void tryLibrary() {
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    long connected = -1;
    if (getaddrinfo("127.0.0.1", "9", &hints, &found) == 0) {
        const int file = socket(found->ai_family, found->ai_socktype, found->ai_protocol);
        connected = file < 0 ? -1 : 0;
        freeaddrinfo(found);
    }
    tell("connect", connected);
    std::cout << "resolve " << (getaddrinfo("sordin.example", "80", &hints, &found) == 0 ? "ok" : "failed")
              << '\n';
}

void tellPrivacy() {
    std::string filter;
    std::ifstream("/proc/self/coredump_filter") >> filter;
    rlimit core{1, 1};
    getrlimit(RLIMIT_CORE, &core);
    std::cout << "dump-filter " << std::stoul(filter, nullptr, 16) << '\n'
              << "dump-limit " << core.rlim_cur + core.rlim_max << '\n'
              << "no-new-privileges " << prctl(PR_GET_NO_NEW_PRIVS, 0, 0, 0, 0) << '\n';
}

}  // namespace

int main(int argc, char** argv) {
    const bool inherited = argc > 1;
    std::promise<void> installed;
    std::thread earlier([&] {  // a thread started before the filter
        installed.get_future().wait();
        tell("thread", rawSocket(AF_INET));
    });
    if (!inherited) {
        const auto dumps = sordin::keepOutOfDumps();
        const auto network = sordin::refuseNetwork();
        std::cout << "installed " << network.value() << '\n' << "dumps " << dumps.value() << '\n';
        std::cout << "dumpable " << prctl(PR_GET_DUMPABLE, 0, 0, 0, 0) << '\n';
    }
    installed.set_value();
    earlier.join();
    tryFamilies();
    tryDetours();
    tryLibrary();
    tellPrivacy();
    std::cout << "end" << std::endl;
    if (!inherited) {
        if (fork() == 0) {
            execl("/proc/self/exe", argv[0], "inherited", nullptr);
            _exit(127);
        }
        wait(nullptr);
    }
}
