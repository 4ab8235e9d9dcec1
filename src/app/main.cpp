// SPDX-License-Identifier: MIT
// sordin: the application's process.
#include "app/application.h"
#include "app/termination_signals.h"
#include "guard/guard_process.h"
#include "platform/linux/sandbox/network_filter.h"
#include "platform/linux/sandbox/private_memory.h"
#include "platform/linux/storage/pending_restore_lock.h"
#include "platform/linux/storage/user_folders.h"
#include "support/own_files.h"
#include "support/program_path.h"

#include <QCoreApplication>
#include <csignal>
#include <cstdio>
#include <exception>
#include <memory>
#include <system_error>

namespace {

using namespace sordin;

constexpr int failed = 1;

std::shared_ptr<VolumeGuard> startGuard(const std::filesystem::path& program) {
    const auto helper = findHelper(program, "sordin-volume-guard");
    if (!helper) {
        std::fprintf(stderr, "sordin: sordin-volume-guard is missing, so a crash in an ad leaves the volume "
                             "down until the next start\n");
        return nullptr;
    }
    return std::make_shared<GuardProcess>(*helper, configFolder());
}

int run(int argc, char** argv) {
    const PendingRestoreLock lock(configFolder(), PendingRestoreLock::patienceAtStart);
    if (lock.state() == PendingRestoreLock::State::taken) {
        std::fprintf(stderr, "sordin: is already running\n");
        return failed;
    }
    const auto program = programPath(argv[0]);
    auto guard = startGuard(program);
    QCoreApplication qt(argc, argv);
    const TerminationSignals signals([] { QCoreApplication::quit(); });
    Application application(program, std::move(guard));
    return QCoreApplication::exec();
}

}  // namespace

int main(int argc, char** argv) {
    // Before there is a thread, so that every one is held by it.
    if (const auto error = refuseNetwork()) {
        std::fprintf(stderr, "sordin: the system cannot be told to refuse the network: %s\n",
                     error.message().c_str());
    }
    static_cast<void>(keepOutOfDumps());
    std::signal(SIGPIPE, SIG_IGN);
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "sordin: %s\n", error.what());
        return failed;
    }
}
