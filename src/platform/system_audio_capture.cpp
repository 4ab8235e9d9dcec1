// SPDX-License-Identifier: MIT
#include "platform/system_audio_capture.h"

#include "support/fatal.h"

namespace sordin {

std::string SystemAudioCapture::description(Error error) {
    switch (error) {
    case Error::noDisplay:
        return "No display available for system audio capture.";
    case Error::unreachable:
        return "Cannot reach the audio server.";
    case Error::noOutput:
        return "The audio server has no audio output.";
    case Error::connectionLost:
        return "The connection to the audio server was lost.";
    case Error::refused:
        return "The audio server ended the capture.";
    case Error::cancelled:
        return "cancelled";
    case Error::alreadyRunning:
        return "The capture is already running.";
    }
    fatal("unknown capture error");
}

}  // namespace sordin
