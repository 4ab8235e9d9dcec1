// SPDX-License-Identifier: MIT
#include "platform/linux/desktop/shown_name.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace sordin {

namespace {

constexpr std::size_t mostCharacters = 80;
constexpr std::string_view replacement = "\xEF\xBF\xBD";
constexpr std::string_view ellipsis = "…";

struct Character {
    std::string_view bytes;
    char32_t code = 0;
    bool valid = false;
};

/// Returns the first character of a nonempty text; a single byte if the text does not begin with valid UTF-8.
Character firstOf(std::string_view text) {
    struct Form {
        unsigned mask;
        unsigned lead;
        char32_t least;  // smaller codes are overlong forms, which are not valid UTF-8
    };
    constexpr std::array<Form, 4> forms{
        {{0x80, 0, 0}, {0xE0, 0xC0, 0x80}, {0xF0, 0xE0, 0x800}, {0xF8, 0xF0, 0x10000}}};
    const auto byte = [text](std::size_t at) { return static_cast<unsigned char>(text[at]); };
    for (std::size_t length = 1; length <= forms.size() && length <= text.size(); ++length) {
        const Form& form = forms[length - 1];
        if ((byte(0) & form.mask) != form.lead) {
            continue;
        }
        char32_t code = byte(0) & ~form.mask;
        bool whole = true;
        for (std::size_t i = 1; i < length; ++i) {
            whole = whole && (byte(i) & 0xC0U) == 0x80;
            code = code << 6U | (byte(i) & 0x3FU);
        }
        const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
        if (whole && code >= form.least && code <= 0x10FFFF && !surrogate) {
            return {text.substr(0, length), code, true};
        }
    }
    return {text.substr(0, 1)};
}

bool isBlank(char32_t code) {
    return code <= ' ' || code == 0x2028 || code == 0x2029;  // includes the line and paragraph separators
}

bool controls(char32_t code) {
    return (code >= 0x7F && code <= 0x9F) || (code >= 0x202A && code <= 0x202E) ||
           (code >= 0x2066 && code <= 0x2069) || code == 0x061C || code == 0x200E || code == 0x200F ||
           code == 0xFEFF;
}

}  // namespace

std::string shownName(std::string_view text) {
    std::string name;
    std::size_t characters = 0;
    std::size_t beforeLast = 0;  // where the last character begins
    bool blank = false;
    const auto add = [&](std::string_view bytes) {
        beforeLast = name.size();
        name += bytes;
        ++characters;
    };
    while (!text.empty()) {
        const Character next = firstOf(text);
        text.remove_prefix(next.bytes.size());
        if (next.valid && controls(next.code)) {
            continue;
        }
        if (next.valid && isBlank(next.code)) {
            blank = !name.empty();
            continue;
        }
        if (characters + (blank ? 1 : 0) >= mostCharacters) {
            name.resize(characters == mostCharacters ? beforeLast : name.size());
            return name.append(ellipsis);
        }
        if (blank) {
            add(" ");
            blank = false;
        }
        add(next.valid ? next.bytes : replacement);
    }
    return name;
}

}  // namespace sordin
