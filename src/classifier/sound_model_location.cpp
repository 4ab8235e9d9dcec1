// SPDX-License-Identifier: MIT
#include "classifier/sound_model_location.h"

#include <system_error>
#include <utility>

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
    const auto in = [](const fs::path& data) -> std::optional<fs::path> {
        fs::path path = (data / relativeToData).lexically_normal();
        return isFile(path) ? std::optional(std::move(path)) : std::nullopt;
    };
    if (auto path = in(folder / SORDIN_DATA_FROM_PROGRAMS)) {
        return path;
    }
    // A build has its own model or none: one that happens to be installed may be of another version.
    const fs::path built = folder.is_absolute() ? buildTree(folder) : fs::path();
    return in(built.empty() ? fs::path(SORDIN_DATA) : built / "share");
}

}  // namespace sordin
