// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/desktop/desktop_entry.h"
#include "platform/process_directory.h"

#include <filesystem>

namespace sordin {

/// Names of applications on Linux: the desktop entry of the application that a process was started as
/// (Flatpak's own record first, then its systemd unit or snap scope, then an entry named like the
/// executable), else that identifier, else the executable's name.
class LinuxProcessDirectory final : public ProcessDirectory {
public:
    explicit LinuxProcessDirectory(DesktopEntries entries = DesktopEntries::ofUser(),
                                   std::filesystem::path proc = "/proc")
        : entries_(std::move(entries)), proc_(std::move(proc)) {}

    [[nodiscard]] std::optional<ApplicationInfo> runningApplication(std::int32_t processId) const override;
    [[nodiscard]] std::optional<ApplicationInfo> frontmostApplication() const override;
    [[nodiscard]] std::int32_t ownProcessId() const override;

private:
    DesktopEntries entries_;
    std::filesystem::path proc_;
};

}  // namespace sordin
