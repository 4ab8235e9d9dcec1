// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/desktop/desktop_entry.h"
#include "platform/process_directory.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <utility>

namespace sordin {

/// Names of applications on Linux: the desktop entry of the application that a process was started as (what
/// the portal knows first, then Flatpak's own record, then its systemd unit or snap scope, then an entry
/// named like the executable), else that identifier, else the executable's name.
class LinuxProcessDirectory final : public ProcessDirectory {
public:
    /// The sandboxed application that a process belongs to, by somebody who has asked the portal. Needed for
    /// processes whose number is that inside their sandbox.
    using PortalLookup = std::function<std::optional<std::string>(std::int32_t)>;

    explicit LinuxProcessDirectory(DesktopEntries entries = DesktopEntries::ofUser(),
                                   std::filesystem::path proc = "/proc", PortalLookup portal = {})
        : entries_(std::move(entries)), proc_(std::move(proc)), portal_(std::move(portal)) {}

    [[nodiscard]] std::optional<ApplicationInfo> runningApplication(std::int32_t processId) const override;
    [[nodiscard]] std::optional<ApplicationInfo> frontmostApplication() const override;
    [[nodiscard]] std::vector<std::string> applicationIds(const std::string& name) const override;
    [[nodiscard]] std::string applicationName(const std::string& id) const override;
    [[nodiscard]] std::int32_t ownProcessId() const override;

private:
    DesktopEntries entries_;
    std::filesystem::path proc_;
    PortalLookup portal_;
};

}  // namespace sordin
