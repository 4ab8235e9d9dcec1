// SPDX-License-Identifier: MIT
// Arbitrary bytes as a history: what is read can be counted and shown, and survives a round trip. An
// unreadable history is kept.
#include "engine/ad_history_file.h"
#include "engine/ad_statistics.h"
#include "engine/duration_text.h"
#include "fuzz/require.h"
#include "rig/temporary_folder.h"
#include "support/manual_serial_queue.h"

#include <cmath>
#include <cstdint>

namespace {

using namespace sordin;
namespace fs = std::filesystem;

void count(const AdHistory& history) {
    std::size_t counted = 0;
    for (const AppStat& row : appStats(history)) {
        require(std::isfinite(row.total) && std::isfinite(row.last));
        require(!formatDuration(row.total).isEmpty());
        counted += static_cast<std::size_t>(row.count);
    }
    require(counted <= history.size());
    for (const AdEvent& event : history) {
        require(!event.id.isNull() && std::isfinite(event.peakConfidence));
        require(localDateTime(event.start).isValid());
        static_cast<void>(todaySummary(history, event.start));
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const TemporaryFolder folder;
    const std::string given(bytes, bytes + size);
    const fs::path path = folder / "history.json";
    writeText(path, given);
    const auto queue = std::make_shared<ManualSerialQueue>("fuzz");
    AdHistoryFile file(path, queue);
    const AdHistory history = file.load();
    require(contentsOf(path) == given);
    if (history.size() <= 100) {
        count(history);
    }
    file.save(history);
    queue->runPending();
    const AdHistory saved = AdHistoryFile(path, queue).load();
    require(saved == history);
    for (const auto& entry : fs::directory_iterator(folder.path())) {
        require(entry.path() == path || contentsOf(entry.path()) == given);
    }
    return 0;
}
