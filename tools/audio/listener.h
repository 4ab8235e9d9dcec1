// SPDX-License-Identifier: MIT
#pragma once

#include "audio/printer.h"
#include "platform/audio_objects.h"
#include "platform/process_directory.h"
#include "platform/system_audio_capture.h"

#include <memory>

namespace sordin::audio {

/// Captures the system's audio, prints its level every half second, and restarts after the audio server was
/// unavailable.
class Listener {
public:
    Listener(std::unique_ptr<SystemAudioCapture> capture, std::shared_ptr<AudioObjects> objects,
             const ProcessDirectory& directory, Printer& printer);
    ~Listener();
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    void start();
    void stop();

private:
    class Meter;

    Printer& printer_;
    const std::shared_ptr<SerialQueue> queue_;
    const std::shared_ptr<Meter> meter_;
    std::unique_ptr<SystemAudioCapture> capture_;
};

}  // namespace sordin::audio
