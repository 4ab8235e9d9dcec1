// SPDX-License-Identifier: MIT
#include "platform/linux/audio/chosen_loopback_source.h"

#include <utility>

namespace sordin {

ChosenLoopbackSource::ChosenLoopbackSource(std::shared_ptr<ServerChoice> choice,
                                           std::unique_ptr<LoopbackSource> pipeWire,
                                           std::unique_ptr<LoopbackSource> pulse)
    : choice_(std::move(choice)), pipeWire_(std::move(pipeWire)), pulse_(std::move(pulse)) {}

ChosenLoopbackSource::~ChosenLoopbackSource() {
    choice_->onChange({});
}

void ChosenLoopbackSource::onChange(std::function<void()> handler) {
    pipeWire_->onChange(handler);
    pulse_->onChange(handler);
    choice_->onChange(std::move(handler));
}

std::optional<LoopbackSource::Obstacle> ChosenLoopbackSource::obstacle() {
    if (&chosen() == pipeWire_.get() && !pipeWire_->obstacle()) {
        // PulseAudio may have taken over the sound, which PipeWire does not report.
        choice_->look();
        if (choice_->undecided()) {
            return Obstacle{failure(SystemAudioCapture::Error::unreachable), true};
        }
    }
    return chosen().obstacle();
}

void ChosenLoopbackSource::open(Handlers handlers) {
    open_ = &chosen();
    open_->open(std::move(handlers));
}

void ChosenLoopbackSource::close() {
    pipeWire_->close();
    pulse_->close();
    open_ = nullptr;
}

void ChosenLoopbackSource::setWanted(bool wanted) {
    if (open_ != nullptr) {
        open_->setWanted(wanted);
    }
}

bool ChosenLoopbackSource::outdated() const {
    if (open_ == nullptr || open_ == &chosen()) {
        return false;
    }
    // If the server of the open source is gone, the source ends by itself.
    const auto obstacle = open_->obstacle();
    return !obstacle || obstacle->failure.error != SystemAudioCapture::Error::unreachable;
}

SystemAudioCapture::Failure ChosenLoopbackSource::failure(SystemAudioCapture::Error error) const {
    return chosen().failure(error);
}

LoopbackSource& ChosenLoopbackSource::chosen() const {
    return choice_->server() == ServerChoice::Server::pulseAudio ? *pulse_ : *pipeWire_;
}

}  // namespace sordin
