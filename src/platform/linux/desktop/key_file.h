// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <string_view>

namespace sordin {

/// Calls `take(key, value)` for each entry of one group of a key file (the format of desktop entries), until
/// `take` returns false. Keys and values have no surrounding blanks. Invalid lines are skipped.
template <class Take>
void forEachEntry(std::string_view text, std::string_view group, Take&& take) {
    const auto trimmed = [](std::string_view word) {
        constexpr std::string_view blanks = " \t\r";
        const auto first = word.find_first_not_of(blanks);
        return first == std::string_view::npos
                   ? std::string_view()
                   : word.substr(first, word.find_last_not_of(blanks) - first + 1);
    };
    bool inside = false;
    while (!text.empty()) {
        const auto end = std::min(text.find('\n'), text.size());
        const auto line = trimmed(text.substr(0, end));
        text.remove_prefix(std::min(text.size(), end + 1));
        if (line.starts_with('[')) {
            inside = line.size() > 1 && line.ends_with(']') && line.substr(1, line.size() - 2) == group;
            continue;
        }
        const auto equals = line.find('=');
        if (!inside || line.starts_with('#') || equals == std::string_view::npos) {
            continue;
        }
        if (!take(trimmed(line.substr(0, equals)), trimmed(line.substr(equals + 1)))) {
            return;
        }
    }
}

}  // namespace sordin
