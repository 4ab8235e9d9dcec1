// SPDX-License-Identifier: MIT
#pragma once

#include "process_use.h"
#include "rig/child_process.h"
#include "rig/temporary_folder.h"
#include "rig/wait_until.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace sordin {

inline std::string commandOf(const std::string& process) {
    const std::string line = contentsOf("/proc/" + process + "/cmdline");
    return std::filesystem::path(line.substr(0, line.find('\0'))).filename();
}

/// The ids of a process and its children.
inline std::vector<std::string> family(pid_t process) {
    std::vector<std::string> all{std::to_string(process)};
    for (const auto& thread : std::filesystem::directory_iterator("/proc/" + all[0] + "/task")) {
        std::ifstream children(thread.path() / "children");
        for (std::string child; children >> child;) {
            all.push_back(child);
        }
    }
    return all;
}

/// A value of /proc/PID/smaps_rollup, in MB.
inline double megabytes(const std::string& process, const std::string& name) {
    std::ifstream figures("/proc/" + process + "/smaps_rollup");
    for (std::string line; std::getline(figures, line);) {
        if (line.starts_with(name + ":")) {
            return std::strtod(line.c_str() + name.size() + 1, nullptr) / 1024;
        }
    }
    return 0;
}

inline void measure(const std::string& what, pid_t program, std::chrono::duration<double> time) {
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

/// The listening program with a private home.
class MeasuredProgram {
public:
    struct Options {
        bool transcribes = false;
        bool windows = false;  ///< shows its window on the current display
        std::vector<std::string> arguments{};
    };

    explicit MeasuredProgram(const Options& options) {
        std::filesystem::create_directories(home_ / "config/Sordin");
        writeText(home_ / "config/Sordin/defaults.json",
                  std::string(R"({"onboarded": true, "transcription": )") +
                      (options.transcribes ? "true}" : "false}"));
        std::vector<std::string> environment{
            "XDG_CONFIG_HOME=" + (home_ / "config").string(), "XDG_DATA_HOME=" + (home_ / "data").string(),
            "QT_LOGGING_RULES=sordin.*.info=true", "QT_FORCE_STDERR_LOGGING=1"};
        if (!options.windows) {
            environment.insert(environment.end(), {"DISPLAY=", "WAYLAND_DISPLAY="});
        }
        std::vector<std::string> command{SORDIN_PROGRAM};
        command.insert(command.end(), options.arguments.begin(), options.arguments.end());
        process_.emplace(command, ChildOptions{.environment = environment, .log = home_ / "log"});
        waitFor("status: listening");
    }

    [[nodiscard]] pid_t pid() const { return process_->pid(); }

    /// Waits until the program logs this text.
    void waitFor(const std::string& text) const {
        const auto said = [&] { return contentsOf(home_ / "log").find(text) != std::string::npos; };
        if (!waitUntil(said, std::chrono::seconds(60))) {
            throw std::runtime_error("the program does not log \"" + text +
                                     "\": " + contentsOf(home_ / "log"));
        }
    }

private:
    TemporaryFolder home_;
    std::optional<ChildProcess> process_;
};

}  // namespace sordin
