// SPDX-License-Identifier: MIT
#pragma once

#include "support/file_descriptor.h"
#include "volume/volume_guard.h"

#include <filesystem>
#include <optional>
#include <string>
#include <sys/types.h>

namespace sordin {

/// The volume guard as a process of its own, sordin-volume-guard, which outlives the program by a moment.
///
/// It promises: when this process ends while a duck is in force, however it ends (SIGKILL, a crash, out of
/// memory), the device that was faded or muted has its volume or its sound back within a second, where the
/// device and the audio server are there; otherwise when they return within ten seconds. Only that device is
/// touched, and a volume is only ever raised. The record of the duck is then removed. It survives the signals
/// that end whole sessions and the closing of the terminal, and holds none of the program's files.
///
/// It does not promise anything
/// - if it is killed too before it is done, as by a service manager that kills all of a program's processes;
///   or if it has died unnoticed since it was told of the duck: it is started again only for the next one;
/// - while the program hangs or is stopped, or a dump of its memory is being written: it is not gone yet;
/// - if the audio server hangs, or the device does not return within ten seconds;
/// - if another run of the program has taken over meanwhile (PendingRestoreLock): that recovers itself.
/// In all these cases a faded volume is left to the record and the next start; a muted device stays muted.
/// Where the system has no pidfd_open (Linux before 5.3) there is no guard.
class GuardProcess final : public VolumeGuard {
public:
    /// Starts `helper`, which finds the record in `folder`. Never fails: pid() is -1 then.
    GuardProcess(const std::filesystem::path& helper, const std::filesystem::path& folder);

    /// Lets the guard end, with the program where a duck is still in force, else now.
    ~GuardProcess() override = default;
    GuardProcess(const GuardProcess&) = delete;
    GuardProcess& operator=(const GuardProcess&) = delete;

    /// Sends a message and does not wait; what was sent reaches the guard even if this process dies next.
    /// A guard that has died or takes no messages is replaced.
    void inForce(const DuckInForce& duck) override;
    void givenBack() override;

    /// The process; -1 if none could be started.
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
