// SPDX-License-Identifier: MIT
#include "platform/linux/storage/pending_restore_lock.h"

#include "support/atomic_file.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <system_error>
#include <thread>

namespace sordin {

namespace {

using Clock = std::chrono::steady_clock;

/// flock() has no timeout, so the lock is polled.
constexpr Clock::duration askingInterval = std::chrono::milliseconds(10);

bool lock(int file) {
    int result = 0;
    do {
        result = flock(file, LOCK_EX | LOCK_NB);
    } while (result != 0 && errno == EINTR);
    return result == 0;
}

}  // namespace

PendingRestoreLock::PendingRestoreLock(const std::filesystem::path& folder,
                                       std::chrono::milliseconds patience) {
    static_cast<void>(createFolders(folder));
    // O_NONBLOCK avoids a hang if the path is, for example, a FIFO.
    constexpr int flags = O_RDWR | O_CREAT | O_CLOEXEC | O_NONBLOCK;
    constexpr mode_t ownersOnly = 0600;
    file_ = FileDescriptor(::open((folder / "pending-restore.lock").c_str(), flags, ownersOnly));
    if (!file_.valid()) {
        return;
    }
    const auto end = Clock::now() + patience;
    while (!lock(file_.get())) {
        if (errno != EWOULDBLOCK) {
            return;
        }
        const auto left = end - Clock::now();
        if (left <= Clock::duration::zero()) {
            state_ = State::taken;
            return;
        }
        std::this_thread::sleep_for(std::min(left, askingInterval));
    }
    state_ = State::held;
}

}  // namespace sordin
