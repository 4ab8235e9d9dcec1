// SPDX-License-Identifier: MIT
#include "platform/linux/audio/linux_audio.h"

#include "platform/linux/audio/chosen_audio_objects.h"
#include "platform/linux/audio/chosen_loopback_source.h"
#include "platform/linux/audio/linux_application_streams.h"
#include "platform/linux/pipewire/audio_objects.h"
#include "platform/linux/pipewire/loopback_source.h"
#include "platform/linux/pulse/audio_objects.h"
#include "platform/linux/pulse/loopback_source.h"

namespace sordin {

LinuxAudio::LinuxAudio()
    : pipeWire_(std::make_shared<pipewire::Session>()),
      pulse_(std::make_shared<pulse::Session>()),
      choice_(std::make_shared<ServerChoice>(pipeWire_, pulse_)),
      objects_(std::make_shared<ChosenAudioObjects>(
          choice_, std::make_shared<pipewire::PipeWireAudioObjects>(pipeWire_),
          std::make_shared<pulse::PulseAudioObjects>(pulse_))),
      streams_(std::make_shared<LinuxApplicationStreams>(pipeWire_, pulse_)) {}

std::unique_ptr<LoopbackSource> LinuxAudio::loopbackSource() const {
    return std::make_unique<ChosenLoopbackSource>(
        choice_, std::make_unique<pipewire::PipeWireLoopbackSource>(pipeWire_),
        std::make_unique<pulse::PulseLoopbackSource>(pulse_));
}

}  // namespace sordin
