// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sordin {

/// The name that a desktop entry gives its application, in the language of `locale` (as in LC_MESSAGES, for
/// example de_AT.UTF-8@euro) as far as the entry knows it. `text` is the contents of the file. None without a
/// name.
[[nodiscard]] std::optional<std::string> desktopEntryName(std::string_view text, const std::string& locale);

/// Where the system keeps desktop entries.
class DesktopEntries {
public:
    /// `folders` hold the entries, earlier ones before later ones.
    DesktopEntries(std::vector<std::filesystem::path> folders, std::string locale)
        : folders_(std::move(folders)), locale_(std::move(locale)) {}

    /// Folders and locale of the user, from the environment; Flatpak's and snap's are among them.
    [[nodiscard]] static DesktopEntries ofUser();

    /// The name of the application with this identifier (the entry is ID.desktop); none if there is no such
    /// entry.
    [[nodiscard]] std::optional<std::string> name(const std::string& id) const;

    /// The identifiers of all entries in the folders, each once. Entries in subfolders are not among them.
    [[nodiscard]] std::vector<std::string> ids() const;

private:
    std::vector<std::filesystem::path> folders_;
    std::string locale_;
};

}  // namespace sordin
