// SPDX-License-Identifier: MIT
#include "platform/linux/desktop/application_id.h"

#include "platform/linux/desktop/key_file.h"

#include <algorithm>

namespace sordin {

namespace {

bool takePrefix(std::string_view& text, std::string_view prefix) {
    const bool found = text.starts_with(prefix);
    text.remove_prefix(found ? prefix.size() : 0);
    return found;
}

bool takeSuffix(std::string_view& text, std::string_view suffix) {
    const bool found = text.ends_with(suffix);
    text.remove_suffix(found ? suffix.size() : 0);
    return found;
}

/// Returns the text before the last occurrence of a character; the whole text if there is none.
std::string_view beforeLast(std::string_view text, char character) {
    return text.substr(0, text.rfind(character));
}

std::string_view afterLast(std::string_view text, char character) {
    const auto at = text.rfind(character);
    return at == std::string_view::npos ? text : text.substr(at + 1);
}

std::optional<unsigned> hexDigit(char c) {
    constexpr std::string_view digits = "0123456789abcdef";
    const auto at = digits.find(c);
    return at == std::string_view::npos ? std::nullopt : std::optional(static_cast<unsigned>(at));
}

/// Decodes systemd's escapes: \x2d is a hyphen.
std::string unescapedUnit(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        const bool escape = text.size() >= 4 && text.starts_with("\\x");
        const auto high = escape ? hexDigit(text[2]) : std::nullopt;
        const auto low = escape ? hexDigit(text[3]) : std::nullopt;
        if (high && low) {
            result += static_cast<char>(*high << 4U | *low);
            text.remove_prefix(4);
        } else {
            result += text.front();
            text.remove_prefix(1);
        }
    }
    return result;
}

std::optional<std::string> nonEmpty(std::string text) {
    return text.empty() ? std::nullopt : std::optional(std::move(text));
}

/// Parses snap.NAME.APP-UUID.scope and, for services, snap.NAME.APP.service.
std::optional<std::string> snapId(std::string_view unit) {
    if (!takePrefix(unit, "snap.")) {
        return std::nullopt;
    }
    if (takeSuffix(unit, ".scope")) {
        constexpr std::size_t uuidAndHyphen = 37;
        if (unit.size() <= uuidAndHyphen || unit[unit.size() - uuidAndHyphen] != '-') {
            return std::nullopt;
        }
        unit.remove_suffix(uuidAndHyphen);
    } else if (!takeSuffix(unit, ".service")) {
        return std::nullopt;
    }
    const auto dot = unit.find('.');
    if (dot == 0 || dot == std::string_view::npos || dot + 1 == unit.size()) {
        return std::nullopt;
    }
    return std::string(unit.substr(0, dot)) + "_" + std::string(unit.substr(dot + 1));
}

/// The hyphen is the separator in unit names; hyphens of the identifier itself are escaped.
std::optional<std::string> unitId(std::string_view unit) {
    if (auto snap = snapId(unit)) {
        return snap;
    }
    if (takePrefix(unit, "app-")) {
        if (takeSuffix(unit, ".scope")) {
            return nonEmpty(unescapedUnit(afterLast(beforeLast(unit, '-'), '-')));
        }
        if (takeSuffix(unit, ".service")) {
            return nonEmpty(unescapedUnit(afterLast(beforeLast(unit, '@'), '-')));
        }
    }
    if (takePrefix(unit, "dbus-:") && takeSuffix(unit, ".service")) {
        return nonEmpty(unescapedUnit(afterLast(beforeLast(unit, '@'), '-')));
    }
    return std::nullopt;
}

}  // namespace

std::optional<std::string> applicationIdFromCgroup(std::string_view text) {
    while (!text.empty()) {
        std::string_view path = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(text.size(), path.size() + 1));
        // Units are nested; the innermost one is the application's.
        while (!path.empty()) {
            const auto unit = afterLast(path, '/');
            if (auto id = unitId(unit)) {
                return id;
            }
            path.remove_suffix(std::min(path.size(), unit.size() + 1));
        }
    }
    return std::nullopt;
}

std::optional<std::string> applicationIdFromFlatpakInfo(std::string_view text) {
    std::optional<std::string> id;
    forEachEntry(text, "Application", [&](std::string_view key, std::string_view value) {
        if (key == "name") {
            id = nonEmpty(std::string(value));
        }
        return !id;
    });
    return id;
}

}  // namespace sordin
