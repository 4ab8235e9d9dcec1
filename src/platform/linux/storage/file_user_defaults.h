// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/storage/json_file.h"
#include "platform/user_defaults.h"
#include "support/serial_queue.h"

#include <nlohmann/json.hpp>

#include <filesystem>
#include <memory>
#include <mutex>

namespace sordin {

/// The user's settings in two files of one folder.
///
/// defaults.json holds the settings. Readers see a change at once; the queue writes it after `writeDelay`, so
/// that callers do not wait for the disk. pending-restore.json holds the keys that begin with
/// "pendingRestore". They have to survive a crash, so apply() writes them before it returns; the queue then
/// syncs the file against a loss of power. Writes to the two files never wait for each other.
///
/// Unknown keys and types are preserved. Failures are silent: the old file stays intact, and the next change
/// tries again.
class FileUserDefaults final : public UserDefaults {
public:
    /// The delay between a change of a setting and the write.
    static constexpr std::chrono::milliseconds writeDelay{100};

    /// Reads both files. `queue` is the queue for the writes.
    FileUserDefaults(const std::filesystem::path& folder, std::shared_ptr<SerialQueue> queue);
    ~FileUserDefaults() override;  ///< calls flush()
    FileUserDefaults(const FileUserDefaults&) = delete;
    FileUserDefaults& operator=(const FileUserDefaults&) = delete;

    [[nodiscard]] std::optional<bool> boolean(const std::string& key) const override;
    [[nodiscard]] std::optional<double> number(const std::string& key) const override;
    [[nodiscard]] std::optional<std::string> text(const std::string& key) const override;
    [[nodiscard]] std::optional<std::vector<std::string>> texts(const std::string& key) const override;
    void apply(const Changes& changes) override;

    /// Returns where an unreadable settings file was moved; empty if there was none.
    [[nodiscard]] std::filesystem::path settingsAside() const;

    /// Writes all pending changes and waits until they are on the disk.
    void flush();

private:
    class Store;
    [[nodiscard]] Store& storeOf(const std::string& key) const;
    template <class Type>
    [[nodiscard]] std::optional<Type> typed(const std::string& key,
                                            bool (nlohmann::json::*isType)() const) const;

    std::shared_ptr<SerialQueue> queue_;
    std::shared_ptr<Store> settings_;
    std::shared_ptr<Store> pending_;
};

}  // namespace sordin
