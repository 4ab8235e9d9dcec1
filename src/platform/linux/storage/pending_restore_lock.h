// SPDX-License-Identifier: MIT
#pragma once

#include "support/file_descriptor.h"

#include <chrono>
#include <filesystem>

namespace sordin {

/// The exclusive right of a process to perform the pending restore in pending-restore.json: a lock on a file
/// beside it. The program takes it before it reads the record and holds it until it exits. The volume guard
/// takes it after the program is gone.
///
/// The kernel releases the lock when the holding process ends for any reason. Child processes do not inherit
/// it. The file remains.
class PendingRestoreLock {
public:
    enum class State {
        held,
        taken,      ///< another process holds the lock
        impossible  ///< the folder cannot hold a lock, for example on a read-only file system
    };

    /// The longest time that a starting program waits for the guard of the previous run. The guard holds the
    /// lock while it starts, waits 2 s for the device and 1 s each for the device's volume and the server's
    /// confirmation. The rest is a margin for a busy machine.
    static constexpr std::chrono::milliseconds patienceAtStart{8'000};

    /// Waits up to `patience` while another process holds the lock. Creates the folder if it is missing.
    explicit PendingRestoreLock(const std::filesystem::path& folder,
                                std::chrono::milliseconds patience = std::chrono::milliseconds(0));

    [[nodiscard]] State state() const { return state_; }

private:
    FileDescriptor file_;
    State state_ = State::impossible;
};

}  // namespace sordin
