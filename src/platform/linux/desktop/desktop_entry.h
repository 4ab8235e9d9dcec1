// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sordin {

/// Returns the application name in a desktop entry, in the language of `locale` (in the form of LC_MESSAGES,
/// for example de_AT.UTF-8@euro) if the entry is translated. `text` is the contents of the file. None if the
/// entry has no name.
[[nodiscard]] std::optional<std::string> desktopEntryName(std::string_view text, const std::string& locale);

/// Looks up desktop entries. Reads the files anew for each call.
class DesktopEntries {
public:
    /// `folders` contain the entries; earlier folders take precedence.
    DesktopEntries(std::vector<std::filesystem::path> folders, std::string locale)
        : folders_(std::move(folders)), locale_(std::move(locale)) {}

    /// Uses the user's folders and locale from the environment, including the folders of Flatpak and snap.
    [[nodiscard]] static DesktopEntries ofUser();

    /// Returns the name of the application with this identifier (the entry is ID.desktop); none if there is
    /// no such entry.
    [[nodiscard]] std::optional<std::string> name(const std::string& id) const;

    /// Returns the identifiers of all entries in the folders, without duplicates. Does not search subfolders.
    [[nodiscard]] std::vector<std::string> ids() const;

private:
    std::vector<std::filesystem::path> folders_;
    std::string locale_;
};

}  // namespace sordin
