// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/pulse/capture_stream.h"
#include "platform/linux/pulse/session.h"
#include "platform/linux/server/server_loopback_source.h"

#include <memory>
#include <utility>

namespace sordin::pulse {

/// Hears all applications through PulseAudio.
class PulseLoopbackSource final : public ServerLoopbackSource<Session, CaptureStream> {
public:
    explicit PulseLoopbackSource(std::shared_ptr<Session> session)
        : ServerLoopbackSource(std::move(session), "PulseAudio") {}
};

}  // namespace sordin::pulse
