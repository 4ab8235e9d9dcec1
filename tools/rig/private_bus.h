// SPDX-License-Identifier: MIT
#pragma once

#include "rig/child_process.h"
#include "rig/temporary_folder.h"

#include <cstdlib>
#include <optional>
#include <stdexcept>
#include <string>

namespace sordin {

/// A private session bus. Sets DBUS_SESSION_BUS_ADDRESS, which a process reads only once; connect to later
/// buses by address(). Ends with the object. The bus does not start installed services, because the machine
/// may have an installed Sordin.
class PrivateBus {
public:
    PrivateBus()
        : daemon_({"dbus-daemon", "--config-file=" + configuration(), "--nofork", "--nopidfile",
                   "--print-address=1"},
                  {.log = folder_ / "log", .readOutput = true}) {
        const auto address = daemon_.readLine(std::chrono::seconds(20));
        if (!address) {
            throw std::runtime_error("dbus-daemon failed to start: " + contentsOf(folder_ / "log"));
        }
        address_ = *address;
        setenv("DBUS_SESSION_BUS_ADDRESS", address_.c_str(), 1);
    }

    [[nodiscard]] const std::string& address() const { return address_; }

    /// Lets the bus start a service when a program calls it. `file` is a D-Bus service file.
    void offer(const std::filesystem::path& file) const {
        copy_file(file, folder_ / "services" / file.filename());
    }

private:
    /// The configuration of a session bus according to dbus-daemon(1), without the standard service folders.
    [[nodiscard]] std::string configuration() const {
        const std::string folder = folder_.path().string();
        create_directory(folder_ / "services");
        std::string text = "<busconfig><type>session</type><listen>unix:dir=" + folder + "</listen>";
        text += "<servicedir>" + folder + "/services</servicedir>";
        text += "<policy context='default'><allow send_destination='*' eavesdrop='true'/>"
                "<allow eavesdrop='true'/><allow own='*'/></policy>"
                "<limit name='auth_timeout'>240000</limit>"  // milliseconds
                "<limit name='max_replies_per_connection'>50000</limit></busconfig>";
        writeText(folder_ / "bus.conf", text);
        return folder_ / "bus.conf";
    }

    TemporaryFolder folder_;
    ChildProcess daemon_;
    std::string address_;
};

}  // namespace sordin
