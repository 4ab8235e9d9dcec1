// SPDX-License-Identifier: MIT
#pragma once

#include "support/file_descriptor.h"
#include "volume/volume_guard.h"

#include <filesystem>
#include <optional>
#include <string>
#include <sys/types.h>

namespace sordin {

/// Runs the volume guard as a separate process, sordin-volume-guard, which outlives the program.
///
/// If this process ends during a duck, for any reason (SIGKILL, a crash, out of memory), the guard restores
/// the volume of the device or unmutes it. It does so within a second if the device and the audio server are
/// available, otherwise when they return within ten seconds. It changes only that device, only raises the
/// volume, and then removes the record of the duck. It survives the signals that end a session and the
/// closing of the terminal, and inherits no open files of the program.
///
/// The guard restores nothing:
/// - if it is killed before it is done, for example by a service manager that kills all processes of the
///   program;
/// - if it has died since the duck was reported, because the program replaces it only at the next duck;
/// - while the program hangs, is stopped or dumps core, because it has not ended;
/// - if the audio server hangs or the device does not return within ten seconds;
/// - if SIGTERM, SIGHUP or SIGINT arrives after it has waited 2 s for an absent device, because it no longer
///   ignores them then;
/// - if a new run of the program holds the PendingRestoreLock, because that run recovers the volume.
///
/// In these cases the record remains, and the next start of the program restores a faded volume. A muted
/// device stays muted. Without pidfd_open (Linux before 5.3) there is no guard.
class GuardProcess final : public VolumeGuard {
public:
    /// Starts the executable `helper`. `folder` is the folder of the record. On failure pid() is -1.
    GuardProcess(const std::filesystem::path& helper, const std::filesystem::path& folder);

    /// Closes the connection. The guard then ends, or, during a duck, waits for the end of the program.
    ~GuardProcess() override = default;
    GuardProcess(const GuardProcess&) = delete;
    GuardProcess& operator=(const GuardProcess&) = delete;

    /// Sends a message without blocking. The guard receives it even if this process dies immediately
    /// afterwards. Replaces a guard that has died or accepts no messages.
    void inForce(const DuckInForce& duck) override;
    void givenBack() override;

    /// The process ID of the guard; -1 if there is none.
    [[nodiscard]] pid_t pid() const { return pid_; }

private:
    void start();
    [[nodiscard]] bool tell(const std::optional<DuckInForce>& duck) const;
    void end();

    const std::string helper_;
    const std::string folder_;
    FileDescriptor socket_;
    pid_t pid_ = -1;
};

}  // namespace sordin
