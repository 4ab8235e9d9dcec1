// SPDX-License-Identifier: MIT
#include "support/own_files.h"

#include <system_error>
#include <utility>

namespace sordin {

namespace {

namespace fs = std::filesystem;

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

/// Where files of one sort lie.
struct Place {
    fs::path fromPrograms;  // installed, relative to the programs
    fs::path inBuild;       // relative to the top of a build tree
    fs::path configured;    // installed, as the build was configured
};

std::optional<fs::path> find(const fs::path& program, const Place& place, const fs::path& name) {
    const fs::path folder = program.parent_path();
    const auto in = [&name](const fs::path& data) -> std::optional<fs::path> {
        fs::path path = (data / "sordin" / name).lexically_normal();
        return isFile(path) ? std::optional(std::move(path)) : std::nullopt;
    };
    if (auto path = in(folder / place.fromPrograms)) {
        return path;
    }
    // A build has its own files or none: one that happens to be installed may be of another version.
    const fs::path built = folder.is_absolute() ? buildTree(folder) : fs::path();
    return in(built.empty() ? place.configured : built / place.inBuild);
}

}  // namespace

std::optional<fs::path> findDataFile(const fs::path& program, const fs::path& name) {
    return find(program, {SORDIN_DATA_FROM_PROGRAMS, "share", SORDIN_DATA}, name);
}

std::optional<fs::path> findHelper(const fs::path& program, const fs::path& name) {
    return find(program, {SORDIN_HELPERS_FROM_PROGRAMS, "libexec", SORDIN_HELPERS}, name);
}

}  // namespace sordin
