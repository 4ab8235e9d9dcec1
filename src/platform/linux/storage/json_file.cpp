// SPDX-License-Identifier: MIT
#include "platform/linux/storage/json_file.h"

#include "support/set_aside.h"

#include <optional>
#include <string>

namespace sordin {

namespace {

namespace fs = std::filesystem;
using nlohmann::json;

/// Far above the size of any file that the program writes.
constexpr std::size_t largestFile = 1 << 20;
constexpr int deepestNesting = 64;  // nlohmann::json recurses for each level when it copies and writes

/// Returns the object in a file; none if it cannot be read as one.
std::optional<json> readObject(const fs::path& path) {
    const auto text = readWholeFile(path, largestFile);
    if (!text) {
        return std::nullopt;
    }
    bool tooDeep = false;
    const auto shallow = [&tooDeep](int depth, json::parse_event_t /*event*/, const json& /*value*/) {
        tooDeep = tooDeep || depth > deepestNesting;
        return !tooDeep;
    };
    json object = json::parse(*text, shallow, false);
    return object.is_object() && !tooDeep ? std::optional(std::move(object)) : std::nullopt;
}

}  // namespace

json JsonFile::load() {
    std::error_code error;
    if (fs::symlink_status(path_, error).type() == fs::file_type::not_found) {
        return json::object();
    }
    if (auto object = readObject(path_)) {
        return std::move(*object);
    }
    unreadable_ = true;
    setAside();
    return json::object();
}

bool JsonFile::save(const json& object, Durability durability) {
    if (unreadable_ && !setAside()) {
        return false;
    }
    std::error_code error;
    if (object.empty()) {
        fs::remove(path_, error);
        return !error;
    }
    static_cast<void>(createFolders(path_.parent_path()));
    // Invalid UTF-8 is replaced so that the write does not fail.
    const auto text = object.dump(2, ' ', false, json::error_handler_t::replace) + "\n";
    return !replaceFile(path_, text, durability);
}

bool JsonFile::setAside() {
    unreadable_ = static_cast<bool>(sordin::setAside(path_, &aside_));
    return !unreadable_;
}

}  // namespace sordin
