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
/// defaults.json holds the settings. A change is seen at once and written a moment later, in the background,
/// so that nobody waits for a disk. pending-restore.json holds the keys that begin with "pendingRestore":
/// they have to outlive a crash, so they are written before apply() returns and only then made safe against a
/// loss of power, in the background. The two never wait for each other.
///
/// Keys and types that this program does not know survive. Failures are silent: the old file stays whole, and
/// the next change tries again.
class FileUserDefaults final : public UserDefaults {
public:
    /// How long a setting may wait before it is written.
    static constexpr std::chrono::milliseconds writeDelay{100};

    /// Reads both files. `queue` does the writing.
    FileUserDefaults(const std::filesystem::path& folder, std::shared_ptr<SerialQueue> queue);
    ~FileUserDefaults() override;  ///< as flush()
    FileUserDefaults(const FileUserDefaults&) = delete;
    FileUserDefaults& operator=(const FileUserDefaults&) = delete;

    [[nodiscard]] std::optional<bool> boolean(const std::string& key) const override;
    [[nodiscard]] std::optional<double> number(const std::string& key) const override;
    [[nodiscard]] std::optional<std::string> text(const std::string& key) const override;
    [[nodiscard]] std::optional<std::vector<std::string>> texts(const std::string& key) const override;
    void apply(const Changes& changes) override;

    /// Where settings that could not be read lie now; empty if they could, or there were none.
    [[nodiscard]] std::filesystem::path settingsAside() const;

    /// Writes what is waiting and returns when it is on the disk.
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
