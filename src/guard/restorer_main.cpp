// SPDX-License-Identifier: MIT
// sordin-volume-restorer FOLDER MESSAGE: what sordin-volume-guard becomes when the program has died: gives
// back what was in force by the guard's last message, with the guard's process, signals and promises.
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

/// A program that has just been starting another may have lent that the lock for a moment.
constexpr auto patienceForLock = 200ms;
/// For a device that is there. A new start of the program waits meanwhile (PendingRestoreLock).
constexpr auto patienceWithLock = 2s;
/// For one that has yet to return.
constexpr auto patienceWithoutLock = 8s;

void endAtSignals() {
    for (const int each : {SIGTERM, SIGHUP, SIGINT}) {
        std::signal(each, SIG_DFL);
    }
}

using Slot = PendingRestore::Slot;

/// The file with the records of ducks.
class RecordFile {
public:
    explicit RecordFile(std::filesystem::path folder) : folder_(std::move(folder)) {}

    /// Where a record like this lies.
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
        return;  // a new run of the program recovers by itself
    }
    const RecordFile file(folder);
    const LinuxAudio audio;
    AudioObjects& objects = *audio.objects();
    auto device = awaitDevice(objects, duck, patienceWithLock);
    if (!device) {
        const auto slot = file.slotOf(duck);
        // Nothing is lost any more by ending: the record is there.
        endAtSignals();
        lock.reset();
        device = awaitDevice(objects, duck, patienceWithoutLock);
        lock.emplace(folder, patienceForLock);
        if (!device || lock->state() == State::taken || file.slotOf(duck) != slot) {
            return;
        }
    }
    if (!giveBack(objects, *device, duck)) {
        return;  // the record stays for the next start
    }
    // Only now: what the guard was told is all it takes, whatever has become of the files.
    if (const auto slot = file.slotOf(duck)) {
        file.remove(*slot);
    }
}

}  // namespace

int main(int argc, char** argv) {
    std::optional<DuckInForce> duck;
    if (argc != 3 || !readGuardMessage(argv[2], duck)) {
        std::cerr << "sordin-volume-restorer is a part of Sordin and is started by its guard\n";
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
