// SPDX-License-Identifier: MIT
// Arbitrary bytes in the files that identify applications: names are one short line of UTF-8, and identifiers
// never lead out of their folder.
#include "fuzz/require.h"
#include "platform/linux/desktop/application_id.h"
#include "platform/linux/desktop/linux_process_directory.h"
#include "platform/linux/desktop/shown_name.h"
#include "rig/temporary_folder.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdint>

namespace {

using namespace sordin;
namespace fs = std::filesystem;

void checkName(const std::string& name) {
    require(
        std::none_of(name.begin(), name.end(), [](char c) { return (c >= '\0' && c < ' ') || c == '\x7F'; }));
    require(!name.starts_with(' ') && !name.ends_with(' '));
    require(std::count_if(name.begin(), name.end(), [](char c) { return (c & 0xC0) != 0x80; }) <= 80);
    static_cast<void>(nlohmann::json(name).dump());  // throws if it is not UTF-8
    require(shownName(name) == name);
}

/// The name of a process with these files.
std::string nameBy(const std::string& cgroup, const std::string& flatpak, const std::string& entry,
                   const std::string& locale) {
    const TemporaryFolder folder;
    const fs::path process = folder / "proc/7";
    fs::create_directories(process / "root");
    fs::create_directories(folder / "entries");
    fs::create_symlink("/usr/bin/radio", process / "exe");
    writeText(process / "cgroup", cgroup);
    writeText(process / "root/.flatpak-info", flatpak);
    writeText(folder / "entries/radio.desktop", entry);
    writeText(folder / "secret.desktop", "[Desktop Entry]\nName=leaked\n");
    const LinuxProcessDirectory directory(DesktopEntries({folder / "entries"}, locale), folder / "proc");
    return directory.runningApplication(7).value().localisedName;
}

}  // namespace

// The first byte selects the kind of file.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const std::string text(bytes + 1, bytes + size);
    const std::string cgroup = "0::/app-radio-1.scope\n";
    const std::string entry = "[Desktop Entry]\nName=Radio\nName[de]=Funk\n";
    std::string name;
    switch (bytes[0] % 4) {
    case 0:
        name = nameBy(text, "", entry, "de_DE.UTF-8");
        require(applicationIdFromCgroup(text).value_or("radio") != "");
        break;
    case 1:
        name = nameBy(cgroup, text, entry, "de_DE.UTF-8");
        require(applicationIdFromFlatpakInfo(text).value_or("radio") != "");
        break;
    case 2:
        name = nameBy(cgroup, "", text, "de_DE.UTF-8@euro");
        break;
    default:
        name = nameBy(cgroup, "", entry, text);
        require(name == "Radio" || name == "Funk");
    }
    checkName(name);
    checkName(shownName(text));
    require(name != "leaked" || text.find("leaked") != std::string::npos);
    return 0;
}
