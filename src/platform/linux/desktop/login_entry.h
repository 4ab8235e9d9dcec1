// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <system_error>

namespace sordin {

/// The entry by which the user's desktop starts the program at login (Desktop Application Autostart
/// Specification). It is the user's own, and there only if asked for.
class LoginEntry {
public:
    /// `folder` is the user's for such entries; need not exist. `program` is what is to be started, hidden.
    LoginEntry(const std::filesystem::path& folder, std::filesystem::path program);

    /// Whether it is there and not switched off, which desktops do in the entry itself. Read anew.
    [[nodiscard]] bool active() const;
    /// Writes or removes it; on an error it is as it was.
    [[nodiscard]] std::error_code setActive(bool active) const;

private:
    std::filesystem::path file_;
    std::filesystem::path program_;
};

}  // namespace sordin
