// SPDX-License-Identifier: MIT
#include "platform/linux/desktop/linux_process_directory.h"

#include "platform/linux/desktop/frontmost_window.h"
#include "platform/linux/desktop/process_application.h"
#include "platform/linux/desktop/shown_name.h"

#include <unistd.h>

namespace sordin {

namespace {

/// Names come from other programs and can contain anything.
ApplicationInfo named(const std::string& name) {
    return {"", shownName(name)};
}

}  // namespace

std::optional<ApplicationInfo> LinuxProcessDirectory::runningApplication(std::int32_t processId) const {
    if (const auto id = portal_ ? portal_(processId) : std::nullopt) {
        return named(entries_.name(*id).value_or(*id));
    }
    const auto ids = applicationIdsOf(processId, proc_);
    for (const auto& id : ids) {
        if (const auto name = entries_.name(id)) {
            return named(*name);
        }
    }
    return ids.empty() ? std::nullopt : std::optional(named(ids.front()));
}

std::optional<ApplicationInfo> LinuxProcessDirectory::frontmostApplication() const {
    const auto process = frontmostWindowProcess();
    return process ? runningApplication(*process) : std::nullopt;
}

std::vector<std::string> LinuxProcessDirectory::applicationIds(const std::string& name) const {
    auto ids = entries_.ids();
    std::erase_if(ids, [&](const std::string& id) { return applicationName(id) != name; });
    if (ids.empty()) {
        ids.push_back(name);
    }
    return ids;
}

std::string LinuxProcessDirectory::applicationName(const std::string& id) const {
    return shownName(entries_.name(id).value_or(id));
}

std::int32_t LinuxProcessDirectory::ownProcessId() const {
    return static_cast<std::int32_t>(getpid());
}

}  // namespace sordin
