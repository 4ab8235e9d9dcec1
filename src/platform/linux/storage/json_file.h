// SPDX-License-Identifier: MIT
#pragma once

#include "support/atomic_file.h"

#include <nlohmann/json.hpp>

#include <filesystem>

namespace sordin {

/// A file that holds one JSON object. Not thread-safe.
///
/// A file that cannot be read as such (damaged, on a failing disk, too large, nested too deeply, not a
/// regular file) is never overwritten. It is moved to NAME.damaged-DATE in the same folder, and the contents
/// are empty.
class JsonFile {
public:
    explicit JsonFile(std::filesystem::path path) : path_(std::move(path)) {}

    [[nodiscard]] const std::filesystem::path& path() const { return path_; }

    /// Returns the object in the file; an empty object if the file does not exist or cannot be read.
    [[nodiscard]] nlohmann::json load();

    /// Returns where an unreadable file was moved; empty if none was moved.
    [[nodiscard]] const std::filesystem::path& aside() const { return aside_; }

    /// Replaces the contents and creates the folder if it is missing. An empty object removes the file.
    /// Returns false on failure; the file is then unchanged.
    bool save(const nlohmann::json& object, Durability durability);

private:
    /// Moves an unreadable file away. Returns true once the path is free.
    bool setAside();

    std::filesystem::path path_;
    std::filesystem::path aside_;
    bool unreadable_ = false;  // an unreadable file still has to be moved
};

}  // namespace sordin
