// SPDX-License-Identifier: MIT
#pragma once

#include "platform/loopback_source.h"
#include "platform/system_audio_capture.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>

namespace sordin {

/// Implements the rules of SystemAudioCapture over a LoopbackSource. The source stays open for `keepTime`
/// after a stop, and a start in that time reuses it: audio servers cope badly with streams that come and go
/// many times a second.
class LoopbackCapture final : public SystemAudioCapture {
public:
    /// How long a start waits for an audio server.
    static constexpr auto patience = std::chrono::seconds(10);
    /// How long the source stays open after a stop.
    static constexpr auto keepTime = std::chrono::seconds(1);

    /// Neither may be null. Everything except the delivery of samples happens on `control`, a separate queue
    /// ("sordin.capture").
    LoopbackCapture(std::shared_ptr<SerialQueue> control, std::unique_ptr<LoopbackSource> source);
    ~LoopbackCapture() override;
    LoopbackCapture(const LoopbackCapture&) = delete;
    LoopbackCapture& operator=(const LoopbackCapture&) = delete;

    void start(std::shared_ptr<SerialQueue> queue, SampleHandler handler,
               StartCompletion completion) override;
    void stop(std::function<void()> completion) override;
    void onStop(std::function<void(std::optional<Failure>)> handler) override;
    void onReady(std::function<void()> handler) override;

private:
    class Delivery;
    class Machine;
    class Outlet;
    const std::shared_ptr<SerialQueue> control_;
    const std::shared_ptr<Machine> machine_;  // posted work holds it weakly
    std::atomic<std::uint64_t> asked_ = 0;    // number of starts so far
};

}  // namespace sordin
