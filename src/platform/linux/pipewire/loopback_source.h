// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/pipewire/capture_stream.h"
#include "platform/linux/pipewire/session.h"
#include "platform/linux/server/server_loopback_source.h"

#include <memory>
#include <utility>

namespace sordin::pipewire {

/// Hears all applications through PipeWire.
class PipeWireLoopbackSource final : public ServerLoopbackSource<Session, CaptureStream> {
public:
    explicit PipeWireLoopbackSource(std::shared_ptr<Session> session)
        : ServerLoopbackSource(std::move(session), "PipeWire") {}
};

}  // namespace sordin::pipewire
