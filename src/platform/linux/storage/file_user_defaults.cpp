// SPDX-License-Identifier: MIT
#include "platform/linux/storage/file_user_defaults.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace sordin {

namespace {

using nlohmann::json;

constexpr std::string_view pendingPrefix = "pendingRestore";

bool isPending(const std::string& key) {
    return key.rfind(pendingPrefix, 0) == 0;
}

/// Applies the changes of pending keys (`pending`) or of all other keys. Returns false if there are none.
bool change(json& object, const UserDefaults::Changes& changes, bool pending) {
    bool changed = false;
    for (const auto& [key, value] : changes) {
        const auto* number = value ? std::get_if<double>(&*value) : nullptr;
        if (isPending(key) != pending || (number != nullptr && !std::isfinite(*number))) {
            continue;
        }
        if (value) {
            json& entry = object[key];
            std::visit([&entry](const auto& typed) { entry = typed; }, *value);
        } else {
            object.erase(key);
        }
        changed = true;
    }
    return changed;
}

}  // namespace

/// A file and its intended contents. The lock guards the contents in memory.
class FileUserDefaults::Store {
public:
    explicit Store(std::filesystem::path path) : file_(std::move(path)), object_(file_.load()) {}

    [[nodiscard]] std::optional<json> find(const std::string& key) const {
        const std::scoped_lock guard(lock_);
        const auto found = object_.find(key);
        return found == object_.end() ? std::nullopt : std::optional<json>(*found);
    }

    /// Applies the changes that concern this store. Returns false if there are none.
    bool change(const Changes& changes, bool pending) {
        const std::scoped_lock guard(lock_);
        const bool changed = sordin::change(object_, changes, pending);
        dirty_ = dirty_ || changed;
        return changed;
    }

    /// Writes to the file system without waiting for the disk. Holds the lock so that concurrent writes keep
    /// their order.
    void writeAtOnce() {
        const std::scoped_lock guard(lock_);
        dirty_ = dirty_ && !file_.save(object_, Durability::programEnd);
    }

    /// Writes to the disk. Call it only on the queue, which keeps the order; it does not hold the lock while
    /// it writes.
    void writeToDisk() {
        if (const auto contents = takeDirty(); contents && !file_.save(*contents, Durability::lossOfPower)) {
            const std::scoped_lock guard(lock_);
            dirty_ = true;
        }
    }

    [[nodiscard]] const std::filesystem::path& aside() const { return file_.aside(); }

    void sync() const { static_cast<void>(syncFile(file_.path())); }

    std::optional<Timer> timer;  // runs until the next write; used only on the queue

private:
    std::optional<json> takeDirty() {
        const std::scoped_lock guard(lock_);
        return std::exchange(dirty_, false) ? std::optional(object_) : std::nullopt;
    }

    JsonFile file_;
    mutable std::mutex lock_;
    json object_;
    bool dirty_ = false;
};

FileUserDefaults::FileUserDefaults(const std::filesystem::path& folder, std::shared_ptr<SerialQueue> queue)
    : queue_(std::move(queue)),
      settings_(std::make_shared<Store>(folder / "defaults.json")),
      pending_(std::make_shared<Store>(folder / "pending-restore.json")) {}

FileUserDefaults::~FileUserDefaults() {
    flush();
}

FileUserDefaults::Store& FileUserDefaults::storeOf(const std::string& key) const {
    return isPending(key) ? *pending_ : *settings_;
}

template <class Type>
std::optional<Type> FileUserDefaults::typed(const std::string& key, bool (json::*isType)() const) const {
    const auto value = storeOf(key).find(key);
    return value && ((*value).*isType)() ? std::optional(value->get<Type>()) : std::nullopt;
}

std::optional<bool> FileUserDefaults::boolean(const std::string& key) const {
    return typed<bool>(key, &json::is_boolean);
}

std::optional<double> FileUserDefaults::number(const std::string& key) const {
    return typed<double>(key, &json::is_number);
}

std::optional<std::string> FileUserDefaults::text(const std::string& key) const {
    return typed<std::string>(key, &json::is_string);
}

std::optional<std::vector<std::string>> FileUserDefaults::texts(const std::string& key) const {
    const auto value = storeOf(key).find(key);
    const bool isList =
        value && value->is_array() &&
        std::all_of(value->begin(), value->end(), [](const json& each) { return each.is_string(); });
    return isList ? std::optional(value->get<std::vector<std::string>>()) : std::nullopt;
}

void FileUserDefaults::apply(const Changes& changes) {
    if (pending_->change(changes, true)) {
        pending_->writeAtOnce();
        queue_->post([store = pending_] { store->sync(); });
    }
    if (settings_->change(changes, false)) {
        queue_->post([store = settings_, weak = std::weak_ptr(queue_)] {
            const auto queue = weak.lock();
            if (queue && !store->timer) {  // one write covers all changes until then
                store->timer = queue->after(writeDelay, [store] {
                    store->timer.reset();
                    store->writeToDisk();
                });
            }
        });
    }
}

std::filesystem::path FileUserDefaults::settingsAside() const {
    return settings_->aside();
}

void FileUserDefaults::flush() {
    queue_->sync([this] {
        settings_->timer.reset();
        settings_->writeToDisk();
        pending_->writeAtOnce();
        pending_->sync();
    });
}

}  // namespace sordin
