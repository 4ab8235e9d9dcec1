// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/pipewire/capture_stream.h"
#include "platform/linux/pipewire/session.h"
#include "platform/linux/server/server_loopback_source.h"

namespace sordin::pipewire {

/// Captures all applications through PipeWire.
using PipeWireLoopbackSource = ServerLoopbackSource<Session, CaptureStream>;

}  // namespace sordin::pipewire
