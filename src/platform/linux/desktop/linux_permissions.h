// SPDX-License-Identifier: MIT
#pragma once

#include "platform/permissions.h"

#include <filesystem>

namespace sordin {

/// Linux asks nobody whether a program may hear the computer: it may, unless it lives in a sandbox that the
/// audio server's socket was not let into. There is no question to ask and no page of settings to open.
class LinuxPermissions final : public Permissions {
public:
    /// `sandboxMark` is a file that only sandboxes have.
    explicit LinuxPermissions(std::filesystem::path sandboxMark = "/.flatpak-info");

    [[nodiscard]] bool screenCapturePreflight() const override;
    void requestScreenCapture() override {}
    void openSettings(const std::string& /*anchor*/) override {}

private:
    std::filesystem::path sandboxMark_;
};

}  // namespace sordin
