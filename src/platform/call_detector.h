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

/// Whose call is on.
struct Call {
    std::string program;                  ///< see ApplicationStream
    std::optional<std::int32_t> process;  ///< none where it is not known
    std::string name;                     ///< what the application calls itself; may be empty

    bool operator==(const Call&) const = default;
};

/// The call that these streams amount to: of an application that plays what it has marked as a call, else of
/// one that plays and records from a microphone. The first of several; none if there is no call.
[[nodiscard]] std::optional<Call> callAmong(const std::vector<ApplicationStream>& streams);

/// Says when a call begins and ends. A change counts once it has lasted for the settling time: streams come
/// and go while an application sets up, and its short sounds make no call. Lives on its queue.
class CallDetector {
public:
    static constexpr std::chrono::seconds settlingTime{1};

    /// `changed` is called on the queue when a call has begun, has ended, or is another's.
    CallDetector(std::shared_ptr<SerialQueue> queue, std::function<void(const std::optional<Call>&)> changed)
        : queue_(std::move(queue)), changed_(std::move(changed)) {}

    /// These streams are running now.
    void streamsChanged(const std::vector<ApplicationStream>& streams);

private:
    const std::shared_ptr<SerialQueue> queue_;
    const std::function<void(const std::optional<Call>&)> changed_;
    std::optional<Call> settled_;
    std::optional<Call> latest_;
    Timer settling_;  // runs while the two differ
};

}  // namespace sordin
