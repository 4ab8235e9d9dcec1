// SPDX-License-Identifier: MIT
#include "platform/linux/desktop/process_application.h"

#include "platform/linux/desktop/application_id.h"
#include "platform/linux/desktop/small_file.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <system_error>

namespace sordin {

namespace {

namespace fs = std::filesystem;

std::optional<std::string> startedAs(const fs::path& process) {
    if (auto id = applicationIdFromFlatpakInfo(readSmallFile(process / "root/.flatpak-info"))) {
        return id;
    }
    return applicationIdFromCgroup(readSmallFile(process / "cgroup"));
}

/// Returns the name of a process's executable; for a process of another user, its command name.
std::string executableName(const fs::path& process) {
    std::error_code error;
    std::string name = fs::read_symlink(process / "exe", error).filename().string();
    constexpr std::string_view replaced = " (deleted)";  // an update replaced the file while it runs
    if (name.ends_with(replaced)) {
        name.erase(name.size() - replaced.size());
    }
    if (name.empty()) {
        name = readSmallFile(process / "comm");
        name.erase(std::min(name.find('\n'), name.size()));
    }
    return name;
}

}  // namespace

std::vector<std::string> applicationIdsOf(std::int32_t processId, const fs::path& proc) {
    const fs::path process = proc / std::to_string(processId);
    std::error_code error;
    if (processId <= 0 || !fs::exists(process, error)) {
        return {};
    }
    std::vector<std::string> ids;
    if (auto id = startedAs(process)) {
        ids.push_back(std::move(*id));
    }
    ids.push_back(executableName(process));
    return ids;
}

}  // namespace sordin
