// SPDX-License-Identifier: MIT
#pragma once

#include "rig/child_process.h"

#include <cstdlib>
#include <stdexcept>

namespace sordin {

/// A private X server (Xvfb), to which $DISPLAY points. It ends with the object.
class PrivateDisplay {
public:
    PrivateDisplay() {
        const auto display = server_.readLine(std::chrono::seconds(20));  // written when the server is ready
        if (!display) {
            throw std::runtime_error("Xvfb did not start");
        }
        setenv("DISPLAY", (":" + *display).c_str(), 1);
        unsetenv("WAYLAND_DISPLAY");
        unsetenv("XDG_SESSION_TYPE");
    }

    /// Kills the server without notifying its clients.
    void kill() {
        server_.kill(SIGKILL);
        server_.wait(std::chrono::minutes(1));
    }

private:
    // Not stdout itself, which the server would close and reopen as another file.
    ChildProcess server_{
        {"sh", "-c", "exec Xvfb -displayfd 3 -noreset -nolisten tcp -screen 0 1280x800x24 3>&1 >&2"},
        {.readOutput = true}};
};

}  // namespace sordin
