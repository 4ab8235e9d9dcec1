// SPDX-License-Identifier: MIT
#pragma once

#include "platform/system_audio_capture.h"

namespace sordin {

/// A capture that the test controls. It records its arguments.
struct FakeCapture final : SystemAudioCapture {
    int starts = 0;
    int stops = 0;
    std::shared_ptr<SerialQueue> queue;
    SampleHandler handler;
    StartCompletion completion;
    std::function<void(std::optional<Failure>)> stopped;
    std::function<void()> ready;
    std::function<void()> stopDone;  // completion of the last stop

    void start(std::shared_ptr<SerialQueue> onQueue, SampleHandler onSamples,
               StartCompletion onStarted) override {
        ++starts;
        queue = std::move(onQueue);
        handler = std::move(onSamples);
        completion = std::move(onStarted);
    }
    void stop(std::function<void()> done) override {
        ++stops;
        stopDone = std::move(done);
    }
    void onStop(std::function<void(std::optional<Failure>)> onStopped) override {
        stopped = std::move(onStopped);
    }
    void onReady(std::function<void()> onReadied) override { ready = std::move(onReadied); }
};

}  // namespace sordin
