// SPDX-License-Identifier: MIT
#include "platform/linux/audio/chosen_loopback_source.h"

#include <utility>

namespace sordin {

namespace {

constexpr auto pulseDeadline = std::chrono::milliseconds(1500);

}  // namespace

ChosenLoopbackSource::ChosenLoopbackSource(std::shared_ptr<ServerChoice> choice,
                                           std::unique_ptr<LoopbackSource> pipeWire,
                                           std::unique_ptr<LoopbackSource> pulse)
    : choice_(std::move(choice)), pipeWire_(std::move(pipeWire)), pulse_(std::move(pulse)) {}

void ChosenLoopbackSource::onChange(std::function<void()> handler) {
    pipeWire_->onChange(handler);
    pulse_->onChange(std::move(handler));
}

std::optional<LoopbackSource::Obstacle> ChosenLoopbackSource::obstacle() {
    if (&chosen() == pipeWire_.get() && !pipeWire_->obstacle()) {
        // PulseAudio may have taken the sound over without a word to PipeWire.
        choice_->look(pulseDeadline);
    }
    return chosen().obstacle();
}

void ChosenLoopbackSource::open(Handlers handlers) {
    chosen().open(std::move(handlers));
}

void ChosenLoopbackSource::close() {
    pipeWire_->close();
    pulse_->close();
}

SystemAudioCapture::Failure ChosenLoopbackSource::failure(SystemAudioCapture::Error error) const {
    return chosen().failure(error);
}

LoopbackSource& ChosenLoopbackSource::chosen() const {
    return choice_->server() == ServerChoice::Server::pulseAudio ? *pulse_ : *pipeWire_;
}

}  // namespace sordin
