// SPDX-License-Identifier: MIT
#pragma once

#include "rig/child_process.h"

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace sordin {

/// The PulseAudio server that tools/dev/unpack-pulseaudio has unpacked, at the socket where programs look for
/// it, with a null sink. Needs the environment of a PrivateAudioServer without its own PulseAudio server.
class PrivatePulseAudio {
public:
    explicit PrivatePulseAudio(const std::filesystem::path& log)
        : process_(arguments(), {.environment = {libraries()}, .log = log}) {
        const auto answers = [&] { return outputOf({"pactl", "info"}, log).has_value(); };
        if (!waitUntil(answers, std::chrono::seconds(20))) {
            throw std::runtime_error("PulseAudio does not start; has tools/dev/unpack-pulseaudio run?");
        }
    }

private:
    /// The folder in usr/lib that holds `what`.
    static std::filesystem::path folderWith(const std::string& what) {
        const std::filesystem::path libraries = SORDIN_PULSEAUDIO "/usr/lib";
        std::error_code missing;
        for (const auto& entry : std::filesystem::directory_iterator(libraries, missing)) {
            if (std::filesystem::exists(entry.path() / what)) {
                return entry.path();
            }
        }
        throw std::runtime_error("tools/dev/unpack-pulseaudio has not run");
    }
    static std::string libraries() {
        const auto folder = folderWith("pulseaudio");
        return "LD_LIBRARY_PATH=" + folder.string() + ":" + (folder / "pulseaudio").string() + ":" +
               modules();
    }
    static std::string modules() { return folderWith("modules") / "modules"; }
    static std::vector<std::string> arguments() {
        const std::filesystem::path runtime = std::getenv("PULSE_RUNTIME_PATH");
        std::filesystem::create_directories(runtime);
        return {SORDIN_PULSEAUDIO "/usr/bin/pulseaudio",
                "-n",
                "--daemonize=no",
                "--use-pid-file=no",
                "--exit-idle-time=-1",
                "-p",
                modules(),
                "-L",
                "module-native-protocol-unix auth-anonymous=1 socket=" + (runtime / "native").string(),
                "-L",
                "module-null-sink"};
    }

    ChildProcess process_;
};

}  // namespace sordin
