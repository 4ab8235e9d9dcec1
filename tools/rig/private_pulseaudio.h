// SPDX-License-Identifier: MIT
#pragma once

#include "rig/audio_server.h"

#include <optional>
#include <string>
#include <vector>

namespace sordin {

/// The PulseAudio server unpacked by tools/dev/unpack-pulseaudio, with the modules of a desktop: it stores
/// volumes, suspends idle sinks, and creates "auto_null" if there are no sinks. Stops with the object.
class PrivatePulseAudio final : public AudioServer {
public:
    explicit PrivatePulseAudio(AudioServerOptions options = {});
    /// Uses the socket of another server, which must not use it.
    PrivatePulseAudio(AudioServerOptions options, const AudioServer& beside);
    ~PrivatePulseAudio() override;
    PrivatePulseAudio(const PrivatePulseAudio&) = delete;
    PrivatePulseAudio& operator=(const PrivatePulseAudio&) = delete;

    void start() override;
    void stop() override;
    void kill() override;
    void hang() override;
    void goOn() override;

    [[nodiscard]] std::string defaultSink() const override;
    void setDefaultSink(const std::string& sink) override;
    [[nodiscard]] std::vector<float> volume(const std::string& sink) const override;
    [[nodiscard]] bool muted(const std::string& sink) const override;
    [[nodiscard]] std::string sinkState(const std::string& sink) const override;
    void createSink(const std::string& sink) override;
    void destroySink(const std::string& sink) override;

private:
    void wait(const std::string& what, const std::function<bool()>& condition);

    std::optional<ChildProcess> process_;
};

}  // namespace sordin
