// SPDX-License-Identifier: MIT
#include "platform/linux/desktop/login_entry.h"

#include "platform/linux/desktop/key_file.h"
#include "platform/linux/desktop/small_file.h"
#include "support/atomic_file.h"

#include <string>
#include <utility>

namespace sordin {

namespace {

namespace fs = std::filesystem;

/// Escapes a value of type string for a desktop entry.
std::string escaped(const std::string& value) {
    std::string result;
    for (const char c : value) {
        switch (c) {
        case '\\':
            result += "\\\\";
            break;
        case '\n':
            result += "\\n";
            break;
        case '\r':
            result += "\\r";
            break;
        case '\t':
            result += "\\t";
            break;
        default:
            result += c;
        }
    }
    return result;
}

/// Quotes an argument of the key Exec, because a path may contain blanks. The result still has to be escaped
/// as a string.
std::string quoted(const std::string& argument) {
    std::string result = "\"";
    for (const char c : argument) {
        if (c == '"' || c == '`' || c == '$' || c == '\\') {
            result += '\\';
        } else if (c == '%') {
            result += '%';  // a single % would begin a field code
        }
        result += c;
    }
    return result + '"';
}

}  // namespace

LoginEntry::LoginEntry(const fs::path& folder, fs::path program)
    : file_(folder / "org.sordin.Sordin.desktop"), program_(std::move(program)) {}

bool LoginEntry::active() const {
    bool there = false;
    bool off = false;
    forEachEntry(readSmallFile(file_), "Desktop Entry", [&](std::string_view key, std::string_view value) {
        there = there || key == "Exec";
        off = off || (key == "Hidden" && value == "true") ||
              (key == "X-GNOME-Autostart-enabled" && value == "false");
        return true;
    });
    return there && !off;
}

std::error_code LoginEntry::setActive(bool active) const {
    std::error_code error;
    if (!active) {
        fs::remove(file_, error);
        return error;
    }
    if (const auto failed = createFolders(file_.parent_path())) {
        return failed;
    }
    return replaceFile(file_,
                       "[Desktop Entry]\n"
                       "Type=Application\n"
                       "Name=Sordin\n"
                       "Icon=org.sordin.Sordin\n"
                       "TryExec=" +
                           escaped(program_.string()) +
                           "\n"
                           "Exec=" +
                           escaped(quoted(program_.string()) + " --hidden") +
                           "\n"
                           "StartupNotify=false\n"
                           "X-GNOME-Autostart-enabled=true\n",
                       Durability::programEnd);
}

}  // namespace sordin
