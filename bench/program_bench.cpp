// SPDX-License-Identifier: MIT
// What the whole program costs, with its helpers, on a private audio server.
//   sordin_program_bench SECONDS [RECORDING]...   seconds for each measurement; each recording is played,
//   with
//                                                transcription and without, and then nothing
#include "process_use.h"
#include "rig/private_audio_server.h"
#include "rig/temporary_folder.h"
#include "rig/wait_until.h"
#include "support/own_files.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace sordin;
using namespace std::chrono_literals;

std::string commandOf(const std::string& process) {
    const std::string line = contentsOf("/proc/" + process + "/cmdline");
    return std::filesystem::path(line.substr(0, line.find('\0'))).filename();
}

/// A process and those that it has started, by number.
std::vector<std::string> family(pid_t process) {
    std::vector<std::string> all{std::to_string(process)};
    for (const auto& thread : std::filesystem::directory_iterator("/proc/" + all[0] + "/task")) {
        std::ifstream children(thread.path() / "children");
        for (std::string child; children >> child;) {
            all.push_back(child);
        }
    }
    return all;
}

/// Of /proc/PID/smaps_rollup, in MB.
double megabytes(const std::string& process, const std::string& name) {
    std::ifstream figures("/proc/" + process + "/smaps_rollup");
    for (std::string line; std::getline(figures, line);) {
        if (line.starts_with(name + ":")) {
            return std::strtod(line.c_str() + name.size() + 1, nullptr) / 1024;
        }
    }
    return 0;
}

void measure(const std::string& what, pid_t program, std::chrono::duration<double> time) {
    std::printf("%s\n", what.c_str());
    std::map<std::string, ProcessUse> before;
    for (const auto& process : family(program)) {
        before[process] = useOf(process);
    }
    std::this_thread::sleep_for(time);
    for (const auto& process : family(program)) {
        const ProcessUse now = useOf(process);
        std::printf(
            "  %-22s %6.2f %% of a core, %6.1f wake-ups a second, %5.1f MB resident, %5.1f of its own\n",
            commandOf(process).c_str(), 100 * (now.cpuSeconds - before[process].cpuSeconds) / time.count(),
            (now.wakeUps - before[process].wakeUps) / time.count(), megabytes(process, "Rss"),
            megabytes(process, "Anonymous"));
    }
    std::fflush(stdout);
}

/// The program with a home of its own, listening.
class Program {
public:
    explicit Program(bool transcribes) {
        std::filesystem::create_directories(home_ / "config/Sordin");
        writeText(home_ / "config/Sordin/defaults.json",
                  std::string(R"({"onboarded": true, "transcription": )") +
                      (transcribes ? "true}" : "false}"));
        process_.emplace(
            std::vector<std::string>{SORDIN_PROGRAM},
            ChildOptions{.environment = {"XDG_CONFIG_HOME=" + (home_ / "config").string(),
                                         "XDG_DATA_HOME=" + (home_ / "data").string(),
                                         "QT_LOGGING_RULES=sordin.*.info=true", "QT_FORCE_STDERR_LOGGING=1"},
                         .log = home_ / "log"});
        if (!waitUntil([&] { return contentsOf(home_ / "log").find("listening") != std::string::npos; },
                       30s)) {
            std::fprintf(stderr, "%s", contentsOf(home_ / "log").c_str());
            std::exit(1);
        }
    }
    [[nodiscard]] pid_t pid() const { return process_->pid(); }

private:
    TemporaryFolder home_;
    std::optional<ChildProcess> process_;
};

}  // namespace

int main(int argc, char** argv) {
    const std::chrono::duration<double> time(argc > 1 ? std::atof(argv[1]) : 30);
    const std::vector<std::string> recordings(argv + std::min(argc, 2), argv + argc);
    PrivateAudioServer server;
    server.start();
    for (const bool transcribes : {false, true}) {
        const Program program(transcribes);
        const std::string how = transcribes ? ", with transcription" : "";
        for (const auto& recording : recordings) {
            const ChildProcess player({"pw-play", recording}, {});
            std::this_thread::sleep_for(5s);  // what a beginning costs is not what goes on
            measure(recording + how, program.pid(), time);
        }
        waitUntil([&] { return server.nodeState("test-sink-A") == "suspended"; }, 30s);
        measure("nothing plays" + how, program.pid(), time);
    }
    return 0;
}
