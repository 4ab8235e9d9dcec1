// SPDX-License-Identifier: MIT
#pragma once

#include "rig/private_audio_server.h"
#include "rig/private_pulseaudio.h"

#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <string>
#include <utility>

namespace sordin {

/// The audio servers with which the sound tests run.
enum class ServerKind { pipeWire, pulseAudio };

inline std::string nameOf(ServerKind kind) {
    return kind == ServerKind::pipeWire ? "PipeWire" : "PulseAudio";
}

inline std::unique_ptr<AudioServer> makeServer(ServerKind kind, AudioServerOptions options = {}) {
    if (kind == ServerKind::pipeWire) {
        return std::make_unique<PrivateAudioServer>(std::move(options));
    }
    return std::make_unique<PrivatePulseAudio>(std::move(options));
}

/// For INSTANTIATE_TEST_SUITE_P.
inline const auto bothServers = testing::Values(ServerKind::pipeWire, ServerKind::pulseAudio);
inline std::string serverName(const testing::TestParamInfo<ServerKind>& info) {
    return nameOf(info.param);
}

}  // namespace sordin
