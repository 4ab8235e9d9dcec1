// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/pipewire/capture_stream.h"
#include "platform/linux/pipewire/session.h"
#include "platform/loopback_source.h"

#include <filesystem>
#include <memory>

namespace sordin::pipewire {

/// Hears all applications through PipeWire.
class PipeWireLoopbackSource final : public LoopbackSource, private Session::Observer {
public:
    /// `session` must not be null. `pulseSocket` is where to look for another audio server.
    PipeWireLoopbackSource(std::shared_ptr<Session> session, std::filesystem::path pulseSocket);
    ~PipeWireLoopbackSource() override;
    PipeWireLoopbackSource(const PipeWireLoopbackSource&) = delete;
    PipeWireLoopbackSource& operator=(const PipeWireLoopbackSource&) = delete;

    void onChange(std::function<void()> handler) override;
    [[nodiscard]] std::optional<Obstacle> obstacle() override;
    void open(Handlers handlers) override;
    void close() override;
    [[nodiscard]] SystemAudioCapture::Failure failure(SystemAudioCapture::Error error) const override;

private:
    // On the loop, under its lock.
    void disconnecting() override;
    void graphChanged() override;

    /// Under the loop's lock: what is missing of the server.
    [[nodiscard]] std::optional<SystemAudioCapture::Error> missing() const;

    const std::shared_ptr<Session> session_;
    const std::filesystem::path pulseSocket_;
    std::function<void()> onChange_;
    std::optional<SystemAudioCapture::Error> lastMissing_;  // as told last
    Handlers handlers_;
    std::unique_ptr<CaptureStream> stream_;  // while open and connected
};

}  // namespace sordin::pipewire
