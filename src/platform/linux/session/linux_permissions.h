// SPDX-License-Identifier: MIT
#pragma once

#include "platform/permissions.h"

#include <QDBusConnection>
#include <filesystem>

namespace sordin {

/// Linux has no prompt for capturing audio: a program may do so unless it runs in a sandbox without access to
/// the socket of an audio server. openSettings() therefore opens the desktop's program for sandbox
/// permissions or for installing packages.
class LinuxPermissions final : public Permissions {
public:
    /// `bus` is the session bus. `sandboxMark` is a file that exists only in sandboxes.
    explicit LinuxPermissions(QDBusConnection bus, std::filesystem::path sandboxMark = "/.flatpak-info");

    [[nodiscard]] bool screenCapturePreflight() const override;
    void requestScreenCapture() override {}
    /// Opens the first available program; the bus starts it. Returns false if there is none.
    bool openSettings(const std::string& anchor) override;

private:
    QDBusConnection bus_;
    std::filesystem::path sandboxMark_;
};

}  // namespace sordin
