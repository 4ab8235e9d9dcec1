// SPDX-License-Identifier: MIT
#include "platform/linux/desktop/linux_process_directory.h"

#include "platform/linux/desktop/application_id.h"
#include "platform/linux/desktop/frontmost_window.h"
#include "platform/linux/desktop/shown_name.h"
#include "platform/linux/desktop/small_file.h"

#include <unistd.h>

namespace sordin {

namespace {

namespace fs = std::filesystem;

std::optional<std::string> applicationId(const fs::path& process) {
    if (auto id = applicationIdFromFlatpakInfo(readSmallFile(process / "root/.flatpak-info"))) {
        return id;
    }
    return applicationIdFromCgroup(readSmallFile(process / "cgroup"));
}

/// The name of the file that a process runs; of a process of somebody else, what it calls itself.
std::string executableName(const fs::path& process) {
    std::error_code error;
    std::string name = fs::read_symlink(process / "exe", error).filename().string();
    constexpr std::string_view replaced = " (deleted)";  // by an update while it runs
    if (name.ends_with(replaced)) {
        name.erase(name.size() - replaced.size());
    }
    if (name.empty()) {
        name = readSmallFile(process / "comm");
        name.erase(std::min(name.find('\n'), name.size()));
    }
    return name;
}

/// Whoever is named may have chosen any name.
ApplicationInfo named(const std::string& name) {
    return {"", shownName(name)};
}

}  // namespace

std::optional<ApplicationInfo> LinuxProcessDirectory::runningApplication(std::int32_t processId) const {
    if (const auto id = portal_ ? portal_(processId) : std::nullopt) {
        return named(entries_.name(*id).value_or(*id));
    }
    const fs::path process = proc_ / std::to_string(processId);
    std::error_code error;
    if (processId <= 0 || !fs::exists(process, error)) {
        return std::nullopt;
    }
    const auto id = applicationId(process);
    const std::string executable = executableName(process);
    for (const auto& candidate : {id.value_or(""), executable}) {
        if (const auto name = entries_.name(candidate)) {
            return named(*name);
        }
    }
    return named(id.value_or(executable));
}

std::optional<ApplicationInfo> LinuxProcessDirectory::frontmostApplication() const {
    const auto process = frontmostWindowProcess();
    return process ? runningApplication(*process) : std::nullopt;
}

std::int32_t LinuxProcessDirectory::ownProcessId() const {
    return static_cast<std::int32_t>(getpid());
}

}  // namespace sordin
