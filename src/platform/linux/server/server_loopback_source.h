// SPDX-License-Identifier: MIT
#pragma once

#include "platform/loopback_source.h"

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

namespace sordin {

/// Captures all applications through a sound server. Session needs lock(), under which it calls its
/// observers, ready(), which is true once the server's objects are listed, and hasSink(). Stream is created
/// from the session and the handlers while the session is connected; it needs update() and setWanted().
template <class Session, class Stream>
class ServerLoopbackSource final : public LoopbackSource, private Session::Observer {
public:
    /// `session` must not be null.
    explicit ServerLoopbackSource(std::shared_ptr<Session> session)
        : session_(std::move(session)), lastMissing_(SystemAudioCapture::Error::unreachable) {
        session_->add(*this);
    }
    ~ServerLoopbackSource() override {
        closeStream();  // the stream must not outlive its connection
        session_->remove(*this);
    }
    ServerLoopbackSource(const ServerLoopbackSource&) = delete;
    ServerLoopbackSource& operator=(const ServerLoopbackSource&) = delete;

    void onChange(std::function<void()> handler) override {
        const auto lock = session_->lock();
        onChange_ = std::move(handler);
    }

    [[nodiscard]] std::optional<Obstacle> obstacle() override {
        const auto lock = session_->lock();
        const auto error = missing();
        return error ? std::optional(Obstacle{failure(*error), true}) : std::nullopt;
    }

    void open(Handlers handlers) override {
        const auto lock = session_->lock();
        handlers_ = std::move(handlers);
        if (!session_->connected()) {
            handlers_.ended(failure(SystemAudioCapture::Error::connectionLost));
            return;
        }
        try {
            stream_ = std::make_unique<Stream>(*session_, handlers_);
        } catch (const std::runtime_error&) {  // no file descriptor is left, for example
            handlers_.ended(failure(SystemAudioCapture::Error::refused));
        }
    }

    void close() override { closeStream(); }

    void setWanted(bool wanted) override {
        const auto lock = session_->lock();
        if (stream_) {
            stream_->setWanted(wanted);
        }
    }

    [[nodiscard]] SystemAudioCapture::Failure failure(SystemAudioCapture::Error error) const override {
        using Error = SystemAudioCapture::Error;
        switch (error) {
        case Error::unreachable:
            return {error, "Cannot reach the " + server_ + " audio server."};
        case Error::noOutput:
            return {error, "The " + server_ + " audio server has no audio output."};
        case Error::connectionLost:
            return {error, "The connection to the " + server_ + " audio server was lost."};
        case Error::refused:
            return {error, "The " + server_ + " audio server did not begin the capture."};
        default:
            return SystemAudioCapture::Failure(error);
        }
    }

private:
    void closeStream() {
        Handlers old;  // destroys the old handlers without the lock
        const auto lock = session_->lock();
        stream_.reset();
        old = std::exchange(handlers_, {});
    }

    // On the session's thread, under its lock:
    void disconnecting() override {
        if (stream_) {
            stream_.reset();
            handlers_.ended(failure(SystemAudioCapture::Error::connectionLost));
        }
    }
    void graphChanged() override {
        const auto now = missing();
        if (std::exchange(lastMissing_, now) != now && onChange_) {
            onChange_();
        }
        if (stream_ && session_->connected()) {
            stream_->update();
        }
    }

    [[nodiscard]] std::optional<SystemAudioCapture::Error> missing() const {
        using Error = SystemAudioCapture::Error;
        if (!session_->ready()) {
            return Error::unreachable;
        }
        return session_->hasSink() ? std::nullopt : std::optional(Error::noOutput);
    }

    const std::shared_ptr<Session> session_;
    const std::string server_ = Session::serverName;
    std::function<void()> onChange_;
    std::optional<SystemAudioCapture::Error> lastMissing_;  // at the last check
    Handlers handlers_;
    std::unique_ptr<Stream> stream_;  // while open and connected
};

}  // namespace sordin
