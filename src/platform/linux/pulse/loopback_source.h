// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/pulse/capture_stream.h"
#include "platform/linux/pulse/session.h"
#include "platform/linux/server/server_loopback_source.h"

namespace sordin::pulse {

/// Captures all applications through PulseAudio.
using PulseLoopbackSource = ServerLoopbackSource<Session, CaptureStream>;

}  // namespace sordin::pulse
