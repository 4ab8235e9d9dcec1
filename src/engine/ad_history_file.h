// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ad_event.h"
#include "support/serial_queue.h"

#include <filesystem>
#include <memory>

namespace sordin {

/// Where the history is kept: a file with a JSON array of the ads, newest first. Failures are silent, and the
/// file is never left half-written.
///
/// Each ad is an object with the keys "id" (a UUID), "start" (a ReferenceDate), "duration", "app",
/// "peakConfidence", "reasons" (a list of texts) and "kind" ("muted", "testOnly", "simulated"). A file in
/// which one of these is missing, of another type or beyond all measure counts as unreadable; keys that are
/// not known are ignored.
class AdHistoryFile {
public:
    /// `queue` does the writing, one save after the other: a queue for this alone, "sordin.history". The
    /// folder of the file need not exist.
    AdHistoryFile(std::filesystem::path path, std::shared_ptr<SerialQueue> queue);

    /// The history in the file; empty if there is none or it cannot be read. One that cannot be read stays as
    /// it is until the first save, which keeps it beside the file as history.json.damaged-DATE.
    [[nodiscard]] AdHistory load();

    /// Replaces the file's contents, later, and waits for the disk so that they outlive a loss of power.
    /// Saves that wait when the queue ends are done.
    void save(AdHistory history);

private:
    class Writer;

    const std::shared_ptr<SerialQueue> queue_;
    const std::shared_ptr<Writer> writer_;  // shared with saves that wait
};

}  // namespace sordin
