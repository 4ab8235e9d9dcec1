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

/// The audio of this computer: one session with each server, and the choice between them.
class LinuxAudio {
public:
    /// Begins to connect. Throws std::runtime_error if a loop or thread cannot be created.
    LinuxAudio();

    /// The returned objects may outlive this one.
    [[nodiscard]] const std::shared_ptr<AudioObjects>& objects() const { return objects_; }
    [[nodiscard]] const std::shared_ptr<ApplicationStreams>& streams() const { return streams_; }
    [[nodiscard]] std::unique_ptr<LoopbackSource> loopbackSource() const;

    /// See ServerChoice::waitUntilKnown().
    bool waitUntilKnown(std::chrono::milliseconds deadline) { return choice_->waitUntilKnown(deadline); }

    /// Returns the sandboxed application of a process, as the server knows it. Any thread.
    [[nodiscard]] std::optional<std::string> portalApplication(std::int32_t processId) const {
        return pipeWire_->portalApplication(processId);
    }

private:
    const std::shared_ptr<pipewire::Session> pipeWire_;
    const std::shared_ptr<pulse::Session> pulse_;
    const std::shared_ptr<ServerChoice> choice_;  // first, so that it observes the sessions before the others
    const std::shared_ptr<AudioObjects> objects_;
    const std::shared_ptr<ApplicationStreams> streams_;
};

}  // namespace sordin
