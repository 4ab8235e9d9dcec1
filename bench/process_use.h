// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <fstream>
#include <string>

namespace sordin {

/// Resources that a process has used since its start.
struct ProcessUse {
    double cpuSeconds = 0;
    double wakeUps = 0;  ///< of all threads that still exist
};

/// `process` is a process id, or "self".
inline ProcessUse useOf(const std::string& process) {
    ProcessUse use;
    for (const auto& thread : std::filesystem::directory_iterator("/proc/" + process + "/task")) {
        double nanoseconds = 0;
        std::ifstream(thread.path() / "schedstat") >> nanoseconds;
        use.cpuSeconds += nanoseconds * 1e-9;
        std::ifstream status(thread.path() / "status");
        const std::string key = "voluntary_ctxt_switches:";
        for (std::string line; std::getline(status, line);) {
            if (line.starts_with(key)) {
                use.wakeUps += std::stod(line.substr(key.size()));
            }
        }
    }
    return use;
}

}  // namespace sordin
