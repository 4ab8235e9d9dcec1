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

/// The root of the build tree that contains `folder`; empty if there is none.
fs::path buildTree(fs::path folder) {
    while (!isFile(folder / "CMakeCache.txt")) {
        if (folder == folder.parent_path()) {
            return {};
        }
        folder = folder.parent_path();
    }
    return folder;
}

/// The folders for one kind of file.
struct Place {
    fs::path fromPrograms;  // installation folder, relative to the program's folder
    fs::path inBuild;       // relative to the root of a build tree
    fs::path configured;    // installation folder that the build was configured with
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
    // A build never uses installed files, which may be of another version.
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
