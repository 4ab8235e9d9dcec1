// SPDX-License-Identifier: MIT
// sordin-volume-restorer FOLDER MESSAGE: sordin-volume-guard executes it in its own process after the program
// has died. Restores the device of MESSAGE, the guard's last message. The guarantees are in guard_process.h.
#include "guard/giving_back.h"
#include "guard/guard_messages.h"
#include "platform/linux/audio/linux_audio.h"
#include "platform/linux/storage/file_user_defaults.h"
#include "platform/linux/storage/pending_restore_lock.h"
#include "support/asio_serial_queue.h"

#include <chrono>
#include <csignal>
#include <exception>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>

namespace {

using namespace sordin;
using namespace std::chrono_literals;

/// A child process that the program was just starting may hold the lock for a moment.
constexpr auto patienceForLock = 200ms;
/// For a device that is present. A new start of the program waits for this time (PendingRestoreLock).
constexpr auto patienceWithLock = 2s;
/// For a device that is absent.
constexpr auto patienceWithoutLock = 8s;

void endAtSignals() {
    for (const int each : {SIGTERM, SIGHUP, SIGINT}) {
        std::signal(each, SIG_DFL);
    }
}

using Slot = PendingRestore::Slot;

/// The file with the records of pending restores.
class RecordFile {
public:
    explicit RecordFile(std::filesystem::path folder) : folder_(std::move(folder)) {}

    /// The slot whose record equals `duck`; nothing if there is none.
    [[nodiscard]] std::optional<Slot> slotOf(const DuckInForce& duck) const {
        const auto* pending = std::get_if<PendingRestore>(&duck);
        const auto defaults = open();
        for (const Slot slot : {Slot::latest, Slot::away}) {
            if (pending != nullptr && PendingRestore::read(*defaults, slot) == *pending) {
                return slot;
            }
        }
        return std::nullopt;
    }
    void remove(Slot slot) const { PendingRestore::remove(*open(), slot); }

private:
    [[nodiscard]] std::shared_ptr<UserDefaults> open() const {
        return std::make_shared<FileUserDefaults>(folder_,
                                                  std::make_shared<AsioSerialQueue>("sordin.defaults"));
    }

    std::filesystem::path folder_;
};

void giveBackFor(const std::filesystem::path& folder, const DuckInForce& duck) {
    using State = PendingRestoreLock::State;
    std::optional<PendingRestoreLock> lock(std::in_place, folder, patienceForLock);
    if (lock->state() == State::taken) {
        return;  // a new run of the program restores the volume
    }
    const RecordFile file(folder);
    const LinuxAudio audio;
    AudioObjects& objects = *audio.objects();
    auto device = awaitDevice(objects, duck, patienceWithLock);
    if (!device) {
        const auto slot = file.slotOf(duck);
        // Release the lock and let signals end this process: the next start of the program restores the
        // record.
        endAtSignals();
        lock.reset();
        device = awaitDevice(objects, duck, patienceWithoutLock);
        lock.emplace(folder, patienceForLock);
        if (!device || lock->state() == State::taken || file.slotOf(duck) != slot) {
            return;
        }
    }
    if (!giveBack(objects, *device, duck)) {
        return;  // the record remains for the next start
    }
    // Access the file only after the restore, which needs nothing but the message and must not depend on the
    // file.
    if (const auto slot = file.slotOf(duck)) {
        file.remove(*slot);
    }
}

}  // namespace

int main(int argc, char** argv) {
    std::optional<DuckInForce> duck;
    if (argc != 3 || !readGuardMessage(argv[2], duck)) {
        std::cerr << "sordin-volume-restorer: only sordin-volume-guard starts this program\n";
        return 2;
    }
    try {
        if (duck) {
            giveBackFor(argv[1], *duck);
        }
    } catch (const std::exception& error) {
        std::cerr << "sordin-volume-restorer: " << error.what() << '\n';
        return 1;
    }
    return 0;
}
