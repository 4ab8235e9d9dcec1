// SPDX-License-Identifier: MIT
// Arbitrary bytes as the settings or the record of pending restores: readable settings survive a change of
// another one, unreadable files are kept, and a record restores a valid volume only.
#include "fuzz/require.h"
#include "platform/linux/storage/file_user_defaults.h"
#include "rig/temporary_folder.h"
#include "support/manual_serial_queue.h"
#include "volume/pending_restore.h"

#include <algorithm>
#include <cstdint>
#include <optional>

namespace {

using namespace sordin;
using nlohmann::json;
namespace fs = std::filesystem;

std::optional<fs::path> setAsideIn(const fs::path& folder) {
    for (const auto& entry : fs::directory_iterator(folder)) {
        if (entry.path().filename().string().find(".damaged-") != std::string::npos) {
            return entry.path();
        }
    }
    return std::nullopt;
}

void checkRecord(const UserDefaults& defaults) {
    const auto record = PendingRestore::read(defaults);
    if (!record || !record->device) {
        return;
    }
    const OutputDeviceRecord& device = *record->device;
    require(!device.name.empty() && device.reference >= 1 && device.reference <= 1.5F);
    require(std::all_of(device.ratios.begin(), device.ratios.end(),
                        [](float ratio) { return ratio >= 0 && ratio <= 1; }));
}

/// The next start reads exactly what the program writes.
void checkChange(const fs::path& folder, const std::shared_ptr<SerialQueue>& queue) {
    const PendingRestore written{0.375F, OutputDeviceRecord{"usb \"1\"", "speaker", 1.25F, {1, 0.5F}}};
    {
        FileUserDefaults defaults(folder, queue);
        defaults.set("sensitivity", 0.3);
        written.write(defaults);
        defaults.flush();
    }
    const FileUserDefaults again(folder, queue);
    require(again.number("sensitivity") == 0.3);
    require(PendingRestore::read(again) == written);
}

}  // namespace

// The first byte selects one of the two files.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const TemporaryFolder folder;
    const std::string given(bytes + 1, bytes + size);
    const fs::path file = folder / (bytes[0] % 2 == 0 ? "defaults.json" : "pending-restore.json");
    writeText(file, given);
    const auto queue = std::make_shared<ManualSerialQueue>("fuzz");
    checkRecord(FileUserDefaults(folder.path(), queue));
    const auto aside = setAsideIn(folder.path());
    require(aside ? !fs::exists(file) && contentsOf(*aside) == given : contentsOf(file) == given);
    checkChange(folder.path(), queue);
    if (!aside) {
        const json before = json::parse(given, nullptr, false);
        const json after = json::parse(contentsOf(file), nullptr, false);
        for (const auto& [key, value] : before.items()) {
            const bool written = bytes[0] % 2 == 0 ? key == "sensitivity" : key.starts_with("pendingRestore");
            require(written || after.at(key) == value);
        }
    }
    return 0;
}
