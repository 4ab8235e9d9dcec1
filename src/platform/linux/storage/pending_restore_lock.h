// SPDX-License-Identifier: MIT
#pragma once

#include "support/file_descriptor.h"

#include <chrono>
#include <filesystem>

namespace sordin {

/// The right to give back what pending-restore.json says, for one process at a time: the lock on a file
/// beside it. The program holds it for all its life, and takes it before it reads the record; its volume
/// guard takes it when the program is gone.
///
/// The system releases it when the process that holds it ends, however that ends. Programs that it starts do
/// not inherit it. The file stays.
class PendingRestoreLock {
public:
    enum class State {
        held,
        taken,      ///< another process holds it
        impossible  ///< the folder can hold no lock, for example a home that cannot be written to
    };

    /// How long a start of the program waits at most for the guard of the run before. That holds the lock
    /// while it starts, waits 2 s for the device and 1 s each for its volume and for the server's
    /// confirmation; a busy machine adds to it.
    static constexpr std::chrono::milliseconds patienceAtStart{8'000};

    /// Waits up to `patience` while another process holds it. Creates the folder if it is missing.
    explicit PendingRestoreLock(const std::filesystem::path& folder,
                                std::chrono::milliseconds patience = std::chrono::milliseconds(0));

    [[nodiscard]] State state() const { return state_; }

private:
    FileDescriptor file_;
    State state_ = State::impossible;
};

}  // namespace sordin
