// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <system_error>

namespace sordin {

/// The autostart entry of this program (Desktop Application Autostart Specification). It exists only if the
/// user has enabled it.
class LoginEntry {
public:
    /// `folder` is the user's autostart folder and need not exist. `program` is the executable to start, with
    /// its window hidden.
    LoginEntry(const std::filesystem::path& folder, std::filesystem::path program);

    /// Whether the entry exists and is not disabled; desktops disable an entry by a key in it. Reads the file
    /// anew.
    [[nodiscard]] bool active() const;
    /// Writes or removes the entry. On an error, the entry is unchanged.
    [[nodiscard]] std::error_code setActive(bool active) const;

private:
    std::filesystem::path file_;
    std::filesystem::path program_;
};

}  // namespace sordin
