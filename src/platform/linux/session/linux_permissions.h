// SPDX-License-Identifier: MIT
#pragma once

#include "platform/permissions.h"

#include <QDBusConnection>
#include <filesystem>

namespace sordin {

/// Linux asks nobody whether a program may hear the computer: it may, unless it lives in a sandbox that no
/// audio server's socket was let into. So there is no question to ask; what helps is the desktop's own
/// program that changes sandboxes or installs what is missing.
class LinuxPermissions final : public Permissions {
public:
    /// `bus` is that of the session. `sandboxMark` is a file that only sandboxes have.
    explicit LinuxPermissions(QDBusConnection bus, std::filesystem::path sandboxMark = "/.flatpak-info");

    [[nodiscard]] bool screenCapturePreflight() const override;
    void requestScreenCapture() override {}
    /// Asks the first of the programs that are there to show itself; the bus starts it. False if there is
    /// none.
    bool openSettings(const std::string& anchor) override;

private:
    QDBusConnection bus_;
    std::filesystem::path sandboxMark_;
};

}  // namespace sordin
