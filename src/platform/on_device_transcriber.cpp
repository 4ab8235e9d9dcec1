// SPDX-License-Identifier: MIT
#include "platform/on_device_transcriber.h"

#include <mutex>
#include <utility>

namespace sordin {

/// The running session and its text. Any thread.
class OnDeviceTranscriber::State {
public:
    using Session = std::shared_ptr<SpeechSession>;

    [[nodiscard]] bool active() const {
        const std::scoped_lock lock(lock_);
        return active_;
    }
    [[nodiscard]] std::string text() const {
        const std::scoped_lock lock(lock_);
        return text_;
    }
    [[nodiscard]] Session session() const {
        const std::scoped_lock lock(lock_);
        return active_ ? session_ : nullptr;
    }

    /// Returns the number of the new session.
    std::uint64_t begin() {
        const std::scoped_lock lock(lock_);
        text_.clear();
        active_ = true;
        return ++number_;
    }
    void keep(Session session) {
        const std::scoped_lock lock(lock_);
        if (active_) {  // otherwise it was ended in the meantime and ends as it is dropped
            session_ = std::move(session);
        }
    }
    /// Drops text of sessions before the latest.
    void hear(std::uint64_t number, const std::string& text) {
        const std::scoped_lock lock(lock_);
        if (number == number_) {
            text_ = text;
        }
    }
    Session end() {
        const std::scoped_lock lock(lock_);
        active_ = false;
        return std::exchange(session_, nullptr);
    }

private:
    mutable std::mutex lock_;
    // Guarded by lock_:
    Session session_;
    std::string text_;
    bool active_ = false;
    std::uint64_t number_ = 0;
};

OnDeviceTranscriber::OnDeviceTranscriber(std::shared_ptr<SpeechRecogniser> recogniser)
    : state_(std::make_shared<State>()), recogniser_(std::move(recogniser)) {}

OnDeviceTranscriber::~OnDeviceTranscriber() {
    end();
}

bool OnDeviceTranscriber::authorised() const {
    return recogniser_ != nullptr && recogniser_->authorised();
}

bool OnDeviceTranscriber::canRequestAuthorization() const {
    return recogniser_ != nullptr && recogniser_->canRequestAuthorisation();
}

void OnDeviceTranscriber::requestAuthorization(std::function<void()> done) {
    if (recogniser_ != nullptr) {
        recogniser_->requestAuthorisation(std::move(done));
    } else {
        done();
    }
}

bool OnDeviceTranscriber::active() const {
    return state_->active();
}

std::string OnDeviceTranscriber::text() const {
    return state_->text();
}

bool OnDeviceTranscriber::available() const {
    return recogniser_ != nullptr && recogniser_->authorised() && recogniser_->available() &&
           recogniser_->supportsOnDevice();
}

void OnDeviceTranscriber::begin() {
    if (!available()) {
        return;
    }
    end();
    const std::uint64_t number = state_->begin();
    state_->keep(recogniser_->start(
        [weak = std::weak_ptr(state_), number](const std::string& text) {
            if (const auto state = weak.lock()) {
                state->hear(number, text);
            }
        },
        [](const std::string& /*error*/) {}));
}

void OnDeviceTranscriber::end() {
    if (const auto session = state_->end()) {
        session->endAudio();
        session->finish();
    }
}

void OnDeviceTranscriber::append(const PcmBuffer& buffer) {
    if (const auto session = state_->session()) {
        session->append(buffer);
    }
}

void OnDeviceTranscriber::rest() {
    end();
    if (recogniser_ != nullptr) {
        recogniser_->rest();
    }
}

}  // namespace sordin
