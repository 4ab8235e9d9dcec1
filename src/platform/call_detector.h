// SPDX-License-Identifier: MIT
#pragma once

#include "platform/application_streams.h"
#include "support/serial_queue.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace sordin {

/// A call in progress, identified by its application.
struct Call {
    std::string program;                  ///< see ApplicationStream
    std::optional<std::int32_t> process;  ///< none if unknown
    std::string name;                     ///< the application's name for itself; may be empty

    bool operator==(const Call&) const = default;
};

/// Finds the call in a list of streams. An application is in a call if it plays a stream that it marked as a
/// call; failing that, if it both plays and records from a microphone. Returns the first match, or none.
[[nodiscard]] std::optional<Call> callAmong(const std::vector<ApplicationStream>& streams);

/// Reports the begin and end of calls. A change counts after it has lasted for the settling time, because
/// streams come and go while an application sets up, and a short sound is not a call. Use it on its queue
/// only.
class CallDetector {
public:
    static constexpr std::chrono::seconds settlingTime{1};

    /// `changed` is called on the queue when a call begins, ends, or passes to another application.
    CallDetector(std::shared_ptr<SerialQueue> queue, std::function<void(const std::optional<Call>&)> changed)
        : queue_(std::move(queue)), changed_(std::move(changed)) {}

    /// Takes the streams that are running now.
    void streamsChanged(const std::vector<ApplicationStream>& streams);

private:
    const std::shared_ptr<SerialQueue> queue_;
    const std::function<void(const std::optional<Call>&)> changed_;
    std::optional<Call> settled_;
    std::optional<Call> latest_;
    Timer settling_;  // runs while settled_ and latest_ differ
};

}  // namespace sordin
