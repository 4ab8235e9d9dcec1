// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/pulse/session.h"
#include "platform/linux/server/server_audio_objects.h"

#include <memory>

namespace sordin::pulse {

/// PulseAudio's sinks and players as audio objects. The server brings the volume that it remembers back
/// before it tells of a sink, so every sink that it tells of is there.
///
/// It stores every volume that it is told, also that of a fade, within ten seconds.
class PulseAudioObjects final : public ServerAudioObjects<Session>, private Session::Observer {
public:
    /// Must not be null.
    explicit PulseAudioObjects(std::shared_ptr<Session> session);
    ~PulseAudioObjects() override;
    PulseAudioObjects(const PulseAudioObjects&) = delete;
    PulseAudioObjects& operator=(const PulseAudioObjects&) = delete;

private:
    // On the loop, under its lock.
    void disconnecting() override;
    void graphChanged() override;
};

}  // namespace sordin::pulse
