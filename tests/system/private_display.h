// SPDX-License-Identifier: MIT
#pragma once

#include "rig/child_process.h"

#include <cstdlib>
#include <stdexcept>

namespace sordin {

/// An X server of a test's own (Xvfb), made the one that $DISPLAY names. Ends with the object.
class PrivateDisplay {
public:
    PrivateDisplay() {
        const auto display = server_.readLine(std::chrono::seconds(20));  // written when it is ready
        if (!display) {
            throw std::runtime_error("Xvfb did not start");
        }
        setenv("DISPLAY", (":" + *display).c_str(), 1);
        unsetenv("WAYLAND_DISPLAY");
        unsetenv("XDG_SESSION_TYPE");
    }

    /// Ends the server at once; nothing is said to its clients.
    void kill() {
        server_.kill(SIGKILL);
        server_.wait(std::chrono::minutes(1));
    }

private:
    // Not its stdout itself, which it would close and open again as something else.
    ChildProcess server_{
        {"sh", "-c", "exec Xvfb -displayfd 3 -noreset -nolisten tcp -screen 0 1280x800x24 3>&1 >&2"},
        {.readOutput = true}};
};

}  // namespace sordin
