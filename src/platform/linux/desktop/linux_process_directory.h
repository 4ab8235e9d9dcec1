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

/// Finds application names on Linux. An identifier from the portal takes precedence. Without one, the
/// candidates are the identifier that the process was started as (Flatpak's own record, else its systemd unit
/// or snap scope), and then the name of its executable. The name comes from the desktop entry of the first
/// candidate that has one; if none has an entry, the first candidate is the name.
class LinuxProcessDirectory final : public ProcessDirectory {
public:
    /// Returns the identifier of the sandboxed application that a process belongs to, as the portal reported
    /// it. Needed because sandboxed programs report process identifiers of their own PID namespace.
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
