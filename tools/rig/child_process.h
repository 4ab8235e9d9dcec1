// SPDX-License-Identifier: MIT
#pragma once

#include "rig/wait_until.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <optional>
#include <poll.h>
#include <stdexcept>
#include <string>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace sordin {

struct ChildOptions {
    std::vector<std::string> environment{};  ///< NAME=value, in addition to the test's own
    std::filesystem::path log{};  ///< file to which stdout and stderr are appended; empty: those of the test
    bool readOutput = false;      ///< stdout goes to readLine() and readAll()
    bool writeInput = false;      ///< stdin comes from writeLine(); otherwise it is empty
};

/// A program that a test starts. It ends with the object, or with the thread that started it.
class ChildProcess {
public:
    using Milliseconds = std::chrono::milliseconds;

    /// Searches the program in $PATH; a program that does not exist ends with status 127.
    explicit ChildProcess(std::vector<std::string> arguments, const ChildOptions& options = {}) {
        std::vector<char*> argv = pointers(arguments);
        std::vector<std::string> environment = options.environment;
        for (char** entry = environ; *entry != nullptr; ++entry) {
            const std::string variable = *entry;
            const std::string start = variable.substr(0, variable.find('=') + 1);
            if (std::none_of(options.environment.begin(), options.environment.end(),
                             [&](const std::string& ours) { return ours.starts_with(start); })) {
                environment.push_back(variable);
            }
        }
        std::vector<char*> envp = pointers(environment);
        std::array<int, 2> input{-1, -1};
        std::array<int, 2> output{-1, -1};
        // Unlike a pipe, a socket can be written to without SIGPIPE.
        if ((options.writeInput && socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, input.data()) != 0) ||
            (options.readOutput && pipe2(output.data(), O_CLOEXEC) != 0)) {
            throw std::runtime_error("cannot create a pipe");
        }
        const int null = open("/dev/null", O_RDWR | O_CLOEXEC);
        const int log = options.log.empty()
                            ? -1
                            : open(options.log.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
        const pid_t parent = getpid();
        pid_ = fork();
        if (pid_ == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            if (getppid() != parent) {
                _exit(127);
            }
            sigset_t none{};
            sigemptyset(&none);
            sigprocmask(SIG_SETMASK, &none, nullptr);
            signal(SIGPIPE, SIG_DFL);
            dup2(options.writeInput ? input[1] : null, STDIN_FILENO);
            dup2(log >= 0 ? log : STDERR_FILENO, STDERR_FILENO);
            dup2(options.readOutput ? output[1] : (log >= 0 ? log : STDOUT_FILENO), STDOUT_FILENO);
            execvpe(argv.front(), argv.data(), envp.data());
            _exit(127);
        }
        input_ = input[0];
        output_ = output[0];
        for (const int theirs : {input[1], output[1], null, log}) {
            closeIfOpen(theirs);
        }
        if (pid_ < 0) {
            throw std::runtime_error("cannot create a process for " + arguments.front());
        }
    }
    /// Sends SIGTERM, and SIGKILL if the program does not end within two seconds.
    ~ChildProcess() {
        kill(SIGTERM);
        if (!wait(std::chrono::seconds(2))) {
            kill(SIGKILL);
            wait(std::chrono::minutes(1));
        }
        closeIfOpen(input_);
        closeIfOpen(output_);
    }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    [[nodiscard]] pid_t pid() const { return pid_; }

    [[nodiscard]] bool running() {
        int status = 0;
        if (!status_ && waitpid(pid_, &status, WNOHANG) == pid_) {
            status_ = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        }
        return !status_;
    }

    /// Does not wait for the end of the program.
    void kill(int signal) {
        if (running()) {
            ::kill(pid_, signal);
        }
    }

    /// Waits for the end. Returns the exit status, or 128 + the signal that ended the program; none if it
    /// still runs.
    std::optional<int> wait(Milliseconds deadline) {
        waitUntil([&] { return !running(); }, deadline);
        return status_;
    }

    /// Sends a line; the line is dropped if the program has ended.
    void writeLine(std::string text) {
        text += '\n';
        static_cast<void>(send(input_, text.data(), text.size(), MSG_NOSIGNAL));
    }
    void closeInput() {
        closeIfOpen(input_);
        input_ = -1;
    }

    /// Returns the next line of the output without the newline; none at the deadline or at the end.
    std::optional<std::string> readLine(Milliseconds deadline) {
        const auto end = std::chrono::steady_clock::now() + deadline;
        std::size_t length = 0;
        while ((length = read_.find('\n')) == std::string::npos) {
            if (!readMore(end)) {
                return std::nullopt;
            }
        }
        std::string line = read_.substr(0, length);
        read_.erase(0, length + 1);
        return line;
    }
    /// Returns the unread output up to the end or the deadline.
    std::string readAll(Milliseconds deadline) {
        const auto end = std::chrono::steady_clock::now() + deadline;
        while (readMore(end)) {
        }
        return std::exchange(read_, {});
    }

private:
    static std::vector<char*> pointers(std::vector<std::string>& texts) {
        std::vector<char*> result;
        result.reserve(texts.size() + 1);
        for (std::string& text : texts) {
            result.push_back(text.data());
        }
        result.push_back(nullptr);
        return result;
    }
    static void closeIfOpen(int descriptor) {
        if (descriptor >= 0) {
            close(descriptor);
        }
    }

    bool readMore(std::chrono::steady_clock::time_point end) {
        for (;;) {
            const auto left =
                std::chrono::duration_cast<Milliseconds>(end - std::chrono::steady_clock::now()).count();
            pollfd ready{output_, POLLIN, 0};
            const int count = poll(&ready, 1, static_cast<int>(left > 0 ? left : 0));
            std::array<char, 4096> bytes{};
            const auto got = count > 0 ? ::read(output_, bytes.data(), bytes.size()) : ssize_t{count};
            if (got > 0) {
                read_.append(bytes.data(), static_cast<std::size_t>(got));
                return true;
            }
            if (got == 0 || errno != EINTR) {
                return false;
            }
        }
    }

    pid_t pid_ = -1;
    std::optional<int> status_;
    int input_ = -1;
    int output_ = -1;
    std::string read_;
};

/// Returns what a program writes to stdout; none if it fails or exceeds the deadline. Its stderr goes to the
/// log.
inline std::optional<std::string> outputOf(std::vector<std::string> arguments,
                                           const std::filesystem::path& log = {},
                                           std::chrono::milliseconds deadline = std::chrono::seconds(10)) {
    ChildProcess program(std::move(arguments), {.log = log, .readOutput = true});
    std::string output = program.readAll(deadline);
    if (program.wait(deadline) != 0) {
        return std::nullopt;
    }
    return output;
}

}  // namespace sordin
