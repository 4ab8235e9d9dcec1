// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ad_event.h"
#include "support/serial_queue.h"

#include <filesystem>
#include <memory>

namespace sordin {

/// The file of the history: a JSON array of ads, newest first. Reports no failures. Replaces the file
/// atomically.
///
/// Each ad is an object with the keys "id" (a UUID), "start" (a ReferenceDate), "duration" (seconds), "app",
/// "peakConfidence", "reasons" (a list of texts) and "kind" ("muted", "testOnly", "simulated"). If any of
/// them is missing, has another type or is out of range, the whole file counts as unreadable. Unknown keys
/// are ignored.
class AdHistoryFile {
public:
    /// `queue` is used for all file accesses and for nothing else; it is labeled "sordin.history". The folder
    /// of the file need not exist.
    AdHistoryFile(std::filesystem::path path, std::shared_ptr<SerialQueue> queue);

    /// Reads the history; empty if the file does not exist or is unreadable. The first save renames an
    /// unreadable file to history.json.damaged-DATE. Blocks until the read is done.
    [[nodiscard]] AdHistory load();

    /// Replaces the contents of the file on the queue and flushes them to the disk, so that they survive a
    /// loss of power. Pending saves complete when the queue is destroyed on another thread.
    void save(AdHistory history);

private:
    class Writer;

    const std::shared_ptr<SerialQueue> queue_;
    const std::shared_ptr<Writer> writer_;  // shared with pending saves
};

}  // namespace sordin
