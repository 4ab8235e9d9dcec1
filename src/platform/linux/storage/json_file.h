// SPDX-License-Identifier: MIT
#pragma once

#include "support/atomic_file.h"

#include <nlohmann/json.hpp>

#include <filesystem>

namespace sordin {

/// A file that holds one JSON object. Not thread-safe.
///
/// What cannot be read as that (damaged, on a failing disk, too large, nested too deeply, no regular file) is
/// never overwritten: it is set aside, beside the file, as NAME.damaged-DATE, and the contents are empty.
class JsonFile {
public:
    explicit JsonFile(std::filesystem::path path) : path_(std::move(path)) {}

    [[nodiscard]] const std::filesystem::path& path() const { return path_; }

    /// The object in the file; an empty one if there is none that can be read.
    [[nodiscard]] nlohmann::json load();

    /// Where load() has put what it could not read; empty if it has moved nothing.
    [[nodiscard]] const std::filesystem::path& aside() const { return aside_; }

    /// Replaces the contents, creating the folder if it is missing; an empty object removes the file. False
    /// if that failed: the file is then as it was.
    bool save(const nlohmann::json& object, Durability durability);

private:
    /// True once nothing that cannot be read lies at the path any more.
    bool setAside();

    std::filesystem::path path_;
    std::filesystem::path aside_;
    bool unreadable_ = false;  // what lies at the path has still to be set aside
};

}  // namespace sordin
