// SPDX-License-Identifier: MIT
#pragma once

#include "rig/audio_server.h"

#include <optional>
#include <string>
#include <vector>

namespace sordin {

/// PipeWire with its session manager and its PulseAudio server. Stops with the object.
class PrivateAudioServer final : public AudioServer {
public:
    explicit PrivateAudioServer(AudioServerOptions options = {});
    ~PrivateAudioServer() override;
    PrivateAudioServer(const PrivateAudioServer&) = delete;
    PrivateAudioServer& operator=(const PrivateAudioServer&) = delete;

    void start() override;
    void stop() override;
    void kill() override;
    void hang() override;
    void goOn() override;

    [[nodiscard]] std::string defaultSink() const override;
    void setDefaultSink(const std::string& sink) override;
    [[nodiscard]] std::vector<float> volume(const std::string& sink) const override;
    [[nodiscard]] bool muted(const std::string& sink) const override;
    [[nodiscard]] std::string sinkState(const std::string& sink) const override { return nodeState(sink); }
    void createSink(const std::string& sink) override;
    void destroySink(const std::string& sink) override;

    /// Like sinkState(), for any node.
    [[nodiscard]] std::string nodeState(const std::string& node) const;
    /// Returns the id of a node; none if it does not exist.
    [[nodiscard]] std::optional<int> nodeId(const std::string& node) const;

private:
    void writeConfiguration();
    /// Plays silence to each sink, because PipeWire 1.4 does not report the volume of a sink that has never
    /// run.
    void runOnce(const std::vector<std::string>& sinks);
    [[nodiscard]] std::string sinkProperties(const std::string& sink, int priority) const;
    [[nodiscard]] bool ready() const;
    [[nodiscard]] bool usable(const std::string& sink) const;
    void wait(const std::string& what, const std::function<bool()>& condition);

    std::optional<ChildProcess> pipewire_;
    std::optional<ChildProcess> sessionManager_;
    std::optional<ChildProcess> pulse_;
};

}  // namespace sordin
