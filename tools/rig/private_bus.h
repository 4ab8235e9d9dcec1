// SPDX-License-Identifier: MIT
#pragma once

#include "rig/child_process.h"
#include "rig/temporary_folder.h"

#include <cstdlib>
#include <optional>
#include <stdexcept>
#include <string>

namespace sordin {

/// A session bus of a test's own, made the one that programs find by the environment. (This one finds
/// only the first so, and others by their address.) Ends with the object.
class PrivateBus {
public:
    PrivateBus()
        : daemon_({"dbus-daemon", "--session", "--nofork", "--nopidfile", "--print-address=1",
                   "--address=unix:dir=" + folder_.path().string()},
                  {.log = folder_ / "log", .readOutput = true}) {
        const auto address = daemon_.readLine(std::chrono::seconds(20));
        if (!address) {
            throw std::runtime_error("dbus-daemon does not start: " + contentsOf(folder_ / "log"));
        }
        address_ = *address;
        setenv("DBUS_SESSION_BUS_ADDRESS", address_.c_str(), 1);
    }

    [[nodiscard]] const std::string& address() const { return address_; }

private:
    TemporaryFolder folder_;
    ChildProcess daemon_;
    std::string address_;
};

}  // namespace sordin
