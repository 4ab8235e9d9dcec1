// SPDX-License-Identifier: MIT
#pragma once

#include "platform/application_streams.h"
#include "platform/audio_objects.h"
#include "platform/linux/audio/server_choice.h"
#include "platform/loopback_source.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace sordin {

/// The sound of this computer, whichever server plays it: one session with each.
class LinuxAudio {
public:
    /// Begins to connect. Throws std::runtime_error.
    LinuxAudio();

    /// Outlive this if they are held.
    [[nodiscard]] const std::shared_ptr<AudioObjects>& objects() const { return objects_; }
    [[nodiscard]] const std::shared_ptr<ApplicationStreams>& streams() const { return streams_; }
    [[nodiscard]] std::unique_ptr<LoopbackSource> loopbackSource() const;

    /// See ServerChoice.
    bool waitUntilKnown(std::chrono::milliseconds deadline) { return choice_->waitUntilKnown(deadline); }

    /// The sandboxed application that a process belongs to, as the server knows it. Any thread.
    [[nodiscard]] std::optional<std::string> portalApplication(std::int32_t processId) const {
        return pipeWire_->portalApplication(processId);
    }

private:
    const std::shared_ptr<pipewire::Session> pipeWire_;
    const std::shared_ptr<pulse::Session> pulse_;
    const std::shared_ptr<ServerChoice> choice_;  // before all who observe the sessions
    const std::shared_ptr<AudioObjects> objects_;
    const std::shared_ptr<ApplicationStreams> streams_;
};

}  // namespace sordin
