// SPDX-License-Identifier: MIT
#include "classifier/sound_model_location.h"

#include <system_error>

namespace sordin {

namespace {

namespace fs = std::filesystem;

constexpr auto relativeToData = "sordin/sound-model.bin";

bool isFile(const fs::path& path) {
    std::error_code ignored;
    return fs::is_regular_file(path, ignored);
}

/// The top of the build tree around a folder; empty if it lies in none.
fs::path buildTree(fs::path folder) {
    while (!isFile(folder / "CMakeCache.txt")) {
        if (folder == folder.parent_path()) {
            return {};
        }
        folder = folder.parent_path();
    }
    return folder;
}

}  // namespace

std::optional<fs::path> findSoundModel(const fs::path& program) {
    const fs::path folder = program.parent_path();
    const fs::path built = folder.is_absolute() ? buildTree(folder) : fs::path();
    // A build tree knows only its own model: one that happens to be installed may be of another version.
    if (!built.empty()) {
        const fs::path path = built / "share" / relativeToData;
        return isFile(path) ? std::optional(path) : std::nullopt;
    }
    for (const fs::path& data : {folder / SORDIN_DATA_FROM_PROGRAMS, fs::path(SORDIN_DATA)}) {
        const fs::path path = (data / relativeToData).lexically_normal();
        if (isFile(path)) {
            return path;
        }
    }
    return std::nullopt;
}

}  // namespace sordin
