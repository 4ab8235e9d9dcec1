// SPDX-License-Identifier: MIT
#include "platform/linux/pipewire/loopback_source.h"

#include "platform/linux/pipewire/pulse_probe.h"

#include <utility>

namespace sordin::pipewire {

namespace {

constexpr auto pulseDeadline = std::chrono::milliseconds(1500);

}  // namespace

PipeWireLoopbackSource::PipeWireLoopbackSource(std::shared_ptr<Session> session,
                                               std::filesystem::path pulseSocket)
    : session_(std::move(session)),
      pulseSocket_(std::move(pulseSocket)),
      lastMissing_(SystemAudioCapture::Error::unreachable) {
    session_->add(*this);
}

PipeWireLoopbackSource::~PipeWireLoopbackSource() {
    session_->remove(*this);
    close();
}

void PipeWireLoopbackSource::onChange(std::function<void()> handler) {
    const auto lock = session_->lock();
    onChange_ = std::move(handler);
}

std::optional<LoopbackSource::Obstacle> PipeWireLoopbackSource::obstacle() {
    using Error = SystemAudioCapture::Error;
    {
        const auto lock = session_->lock();
        if (const auto error = missing()) {
            return Obstacle{failure(*error), true};
        }
    }
    // A desktop may run PipeWire for its screen sharing only and play sound through PulseAudio.
    if (isOtherPulseServer(pulseSocket_, pulseDeadline).value_or(false)) {
        return Obstacle{failure(Error::otherServer), false};
    }
    return std::nullopt;
}

void PipeWireLoopbackSource::open(Handlers handlers) {
    const auto lock = session_->lock();
    handlers_ = std::move(handlers);
    if (session_->connection() == nullptr) {
        handlers_.ended(failure(SystemAudioCapture::Error::connectionLost));
        return;
    }
    stream_ = std::make_unique<CaptureStream>(*session_, handlers_);
}

void PipeWireLoopbackSource::close() {
    Handlers old;  // what they know ends without the lock
    const auto lock = session_->lock();
    stream_.reset();
    old = std::exchange(handlers_, {});
}

SystemAudioCapture::Failure PipeWireLoopbackSource::failure(SystemAudioCapture::Error error) const {
    using Error = SystemAudioCapture::Error;
    switch (error) {
    case Error::unreachable:
        return {error, "Cannot reach the PipeWire audio server."};
    case Error::noOutput:
        return {error, "The PipeWire audio server has no audio output."};
    case Error::otherServer:
        return {error, "The sound of this computer is played by PulseAudio, not by PipeWire."};
    case Error::connectionLost:
        return {error, "The connection to the PipeWire audio server was lost."};
    case Error::refused:
        return {error, "The PipeWire audio server did not begin the capture."};
    default:
        return SystemAudioCapture::Failure(error);
    }
}

void PipeWireLoopbackSource::disconnecting() {
    if (stream_) {
        stream_.reset();
        handlers_.ended(failure(SystemAudioCapture::Error::connectionLost));
    }
}

void PipeWireLoopbackSource::graphChanged() {
    const auto now = missing();
    if (std::exchange(lastMissing_, now) != now && onChange_) {
        onChange_();
    }
    if (stream_ && session_->connection() != nullptr) {
        stream_->update(session_->connection()->graph());
    }
}

std::optional<SystemAudioCapture::Error> PipeWireLoopbackSource::missing() const {
    using Error = SystemAudioCapture::Error;
    if (session_->connection() == nullptr || !session_->listed()) {
        return Error::unreachable;
    }
    return session_->connection()->graph().hasSink() ? std::nullopt : std::optional(Error::noOutput);
}

}  // namespace sordin::pipewire
