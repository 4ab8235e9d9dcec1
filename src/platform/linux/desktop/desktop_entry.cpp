// SPDX-License-Identifier: MIT
#include "platform/linux/desktop/desktop_entry.h"

#include "platform/linux/desktop/key_file.h"
#include "platform/linux/desktop/small_file.h"

#include <algorithm>
#include <cstdlib>
#include <set>
#include <system_error>

namespace sordin {

namespace {

namespace fs = std::filesystem;

/// Returns the keys that can hold the name, best first, in the order of the Desktop Entry Specification for a
/// locale of the form lang_COUNTRY.ENCODING@MODIFIER.
std::vector<std::string> nameKeys(const std::string& locale) {
    const auto at = std::min(locale.find('@'), locale.size());
    const std::string modifier = locale.substr(at);
    const std::string beforeModifier = locale.substr(0, at);
    const std::string place = beforeModifier.substr(0, beforeModifier.find('.'));
    const std::string language = place.substr(0, place.find('_'));
    std::vector<std::string> keys;
    for (const auto& candidate : {place + modifier, place, language + modifier, language}) {
        if (!candidate.empty() && std::find(keys.begin(), keys.end(), candidate) == keys.end()) {
            keys.push_back(candidate);
        }
    }
    for (std::string& key : keys) {
        key.insert(0, "Name[").append("]");
    }
    keys.emplace_back("Name");
    return keys;
}

std::string unescaped(std::string_view text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\' || i + 1 == text.size()) {
            result += text[i];
            continue;
        }
        switch (text[++i]) {
        case 's':
        case 'n':  // a name has to fit on one line
        case 't':
        case 'r':
            result += ' ';
            break;
        default:
            result += text[i];
        }
    }
    return result;
}

std::string environment(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

/// Returns the folder in an environment variable. The XDG Base Directory Specification requires programs to
/// ignore relative paths.
fs::path folder(const char* name, const fs::path& fallback) {
    const fs::path value = environment(name);
    return value.is_absolute() ? value : fallback;
}

std::string userLocale() {
    for (const auto* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        if (auto value = environment(name); !value.empty()) {
            return value;
        }
    }
    return {};
}

}  // namespace

std::optional<std::string> desktopEntryName(std::string_view text, const std::string& locale) {
    const auto keys = nameKeys(locale);
    auto best = keys.end();
    std::string name;
    forEachEntry(text, "Desktop Entry", [&](std::string_view key, std::string_view value) {
        const auto found = std::find(keys.begin(), best, key);
        if (found != best && !value.empty()) {
            best = found;
            name = unescaped(value);
        }
        return true;
    });
    return name.empty() ? std::nullopt : std::optional(name);
}

DesktopEntries DesktopEntries::ofUser() {
    const fs::path userData = folder("XDG_DATA_HOME", folder("HOME", "/") / ".local/share");
    std::vector<fs::path> data{userData};
    std::string rest = environment("XDG_DATA_DIRS");
    if (rest.empty()) {
        rest = "/usr/local/share:/usr/share";
    }
    while (!rest.empty()) {
        const auto end = std::min(rest.find(':'), rest.size());
        if (const fs::path each = rest.substr(0, end); each.is_absolute()) {
            data.push_back(each);
        }
        rest.erase(0, end + 1);
    }
    data.insert(data.end(), {userData / "flatpak/exports/share", "/var/lib/flatpak/exports/share",
                             "/var/lib/snapd/desktop"});
    for (fs::path& each : data) {
        each /= "applications";
    }
    return {data, userLocale()};
}

std::optional<std::string> DesktopEntries::name(const std::string& id) const {
    // An identifier must not lead out of the folder.
    if (id.empty() || id.find('/') != std::string::npos || id.find('\0') != std::string::npos) {
        return std::nullopt;
    }
    for (const fs::path& applications : folders_) {
        if (auto name = desktopEntryName(readSmallFile(applications / (id + ".desktop")), locale_)) {
            return name;
        }
    }
    return std::nullopt;
}

std::vector<std::string> DesktopEntries::ids() const {
    std::set<std::string> ids;
    for (const fs::path& applications : folders_) {
        std::error_code error;
        for (fs::directory_iterator entry(applications, error), end; !error && entry != end;
             entry.increment(error)) {
            if (entry->path().extension() == ".desktop") {
                ids.insert(entry->path().stem().string());
            }
        }
    }
    return {ids.begin(), ids.end()};
}

}  // namespace sordin
