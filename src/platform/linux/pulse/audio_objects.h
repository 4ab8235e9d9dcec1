// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/pulse/session.h"
#include "platform/linux/server/server_audio_objects.h"

#include <memory>

namespace sordin::pulse {

/// PulseAudio's sinks and players as audio objects. Every listed sink counts as present: the server restores
/// a sink's stored volume before it lists the sink.
///
/// The server stores every volume that it is set to, including the steps of a fade, within ten seconds.
class PulseAudioObjects final : public ServerAudioObjects<Session>, private Session::Observer {
public:
    /// `session` must not be null.
    explicit PulseAudioObjects(std::shared_ptr<Session> session);
    ~PulseAudioObjects() override;
    PulseAudioObjects(const PulseAudioObjects&) = delete;
    PulseAudioObjects& operator=(const PulseAudioObjects&) = delete;

private:
    // On the loop's thread, under its lock:
    void disconnecting() override;
    void graphChanged() override;
};

}  // namespace sordin::pulse
