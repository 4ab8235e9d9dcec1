// SPDX-License-Identifier: MIT
// sordin-volume-guard FOLDER: gives the volume back if the program dies. Started by the program alone; what
// it promises is in guard_process.h. While it waits it has one thread and no connection to anything but the
// program.
#include "guard/giving_back.h"
#include "guard/guard_messages.h"
#include "guard/guard_start.h"
#include "platform/linux/audio/linux_audio.h"
#include "platform/linux/storage/file_user_defaults.h"
#include "platform/linux/storage/pending_restore_lock.h"
#include "support/asio_serial_queue.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <exception>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <poll.h>
#include <string_view>
#include <sys/socket.h>
#include <sys/stat.h>

namespace {

using namespace sordin;
using namespace std::chrono_literals;

/// A program that has just been starting another may have lent that the lock for a moment.
constexpr auto patienceForLock = 200ms;
/// For a device that is there. A new start of the program waits meanwhile (PendingRestoreLock).
constexpr auto patienceWithLock = 2s;
/// For one that has yet to return.
constexpr auto patienceWithoutLock = 8s;

/// Those that end a session, and SIGPIPE: the audio server may go while it is being told something.
void ignoreSignals() {
    sigset_t ignored;
    sigemptyset(&ignored);
    for (const int each : guard_start::heldBackSignals) {
        std::signal(each, SIG_IGN);
        sigaddset(&ignored, each);
    }
    sigprocmask(SIG_UNBLOCK, &ignored, nullptr);
}

void endAtSignals() {
    for (const int each : {SIGTERM, SIGHUP, SIGINT}) {
        std::signal(each, SIG_DFL);
    }
}

/// Takes in the messages that are there. False if no more can come.
bool receive(std::optional<DuckInForce>& duck) {
    std::array<char, longestGuardMessage> text;
    while (true) {
        const auto length = recv(guard_start::messages, text.data(), text.size(), MSG_DONTWAIT | MSG_TRUNC);
        if (length > 0 && static_cast<std::size_t>(length) <= text.size()) {
            static_cast<void>(readGuardMessage({text.data(), static_cast<std::size_t>(length)}, duck));
        } else if (length == 0 || (length < 0 && errno != EINTR)) {
            return length < 0 && errno == EAGAIN;
        }
    }
}

/// Returns when the program is gone, or has no more use for a guard; what was in force then.
std::optional<DuckInForce> watchProgram() {
    std::optional<DuckInForce> duck;
    std::array<pollfd, 2> sources{{{guard_start::program, POLLIN, 0}, {guard_start::messages, POLLIN, 0}}};
    auto& [program, messages] = sources;
    while (true) {
        if (poll(sources.data(), sources.size(), -1) < 0 && errno != EINTR) {
            return std::nullopt;
        }
        // In this order: what it said last counts.
        const bool gone = program.revents != 0;
        if ((gone || messages.revents != 0) && !receive(duck)) {
            messages.fd = -1;
            if (!duck) {
                return std::nullopt;
            }
        }
        if (gone) {
            return duck;
        }
    }
}

/// The file with the record of a duck.
class RecordFile {
public:
    explicit RecordFile(std::filesystem::path folder) : folder_(std::move(folder)) {}

    [[nodiscard]] std::optional<PendingRestore> read() const { return PendingRestore::read(*open()); }
    void remove() const { PendingRestore::remove(*open()); }

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
    const auto record = file.read();
    const LinuxAudio audio;
    AudioObjects& objects = *audio.objects();
    auto device = awaitDevice(objects, duck, patienceWithLock);
    if (!device) {
        // Nothing is lost any more by ending: the record is there.
        endAtSignals();
        lock.reset();
        device = awaitDevice(objects, duck, patienceWithoutLock);
        lock.emplace(folder, patienceForLock);
        if (!device || lock->state() == State::taken || file.read() != record) {
            return;
        }
    }
    giveBack(objects, *device, duck);
    const auto* pending = std::get_if<PendingRestore>(&duck);
    if (pending != nullptr && record == *pending) {
        file.remove();
    }
}

bool calledByProgram() {
    struct stat messages {};
    return fstat(guard_start::messages, &messages) == 0 && S_ISSOCK(messages.st_mode);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2 || !calledByProgram()) {
        std::cerr << "sordin-volume-guard is a part of Sordin and is started by it\n";
        return 2;
    }
    ignoreSignals();
    try {
        if (const auto duck = watchProgram()) {
            giveBackFor(argv[1], *duck);
        }
    } catch (const std::exception& error) {
        std::cerr << "sordin-volume-guard: " << error.what() << '\n';
        return 1;
    }
    return 0;
}
