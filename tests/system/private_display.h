// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace sordin {

/// An X server of a test's own (Xvfb), made the one that $DISPLAY names. Ends with the object.
class PrivateDisplay {
public:
    PrivateDisplay() {
        std::array<int, 2> pipe{};
        if (::pipe(pipe.data()) != 0) {
            throw std::runtime_error("no pipe");
        }
        server_ = fork();
        if (server_ == 0) {
            const std::string number = std::to_string(pipe[1]);
            execlp("Xvfb", "Xvfb", "-displayfd", number.c_str(), "-noreset", "-nolisten", "tcp", "-screen",
                   "0", "1280x800x24", nullptr);
            _exit(127);
        }
        close(pipe[1]);
        const std::string display = readLine(pipe[0]);  // the server writes it when it is ready
        close(pipe[0]);
        if (display.empty()) {
            end();
            throw std::runtime_error("Xvfb did not start");
        }
        setenv("DISPLAY", (":" + display).c_str(), 1);
        unsetenv("WAYLAND_DISPLAY");
        unsetenv("XDG_SESSION_TYPE");
    }
    ~PrivateDisplay() { end(); }
    PrivateDisplay(const PrivateDisplay&) = delete;
    PrivateDisplay& operator=(const PrivateDisplay&) = delete;

    /// Ends the server at once; nothing is said to its clients.
    void kill() {
        ::kill(server_, SIGKILL);
        reap();
    }

private:
    static std::string readLine(int descriptor) {
        std::string line;
        char c = 0;
        while (line.size() < 16) {
            const auto got = ::read(descriptor, &c, 1);
            if (got == 1 && c != '\n') {
                line += c;
            } else if (got >= 0 || errno != EINTR) {
                break;
            }
        }
        return line;
    }

    void end() {
        if (server_ > 0) {
            ::kill(server_, SIGTERM);
            reap();
        }
    }

    void reap() {
        int status = 0;
        while (server_ > 0 && waitpid(server_, &status, 0) < 0 && errno == EINTR) {
        }
        server_ = -1;
    }

    pid_t server_ = -1;
};

}  // namespace sordin
