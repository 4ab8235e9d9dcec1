// SPDX-License-Identifier: MIT
#include "platform/linux/audio/linux_application_streams.h"

#include <utility>

namespace sordin {

/// Tracks the streams of one server. Called on its loop, under its lock.
template <class Session>
class LinuxApplicationStreams::Watch : private Session::Observer {
public:
    Watch(LinuxApplicationStreams& owner, Session& session, Streams& streams)
        : owner_(owner), session_(session), streams_(streams) {
        session_.add(*this);
    }
    ~Watch() override { session_.remove(*this); }
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

private:
    void disconnecting() override { owner_.update(streams_, {}); }
    void graphChanged() override { owner_.update(streams_, session_.applicationStreams()); }

    LinuxApplicationStreams& owner_;
    Session& session_;
    Streams& streams_;
};

LinuxApplicationStreams::LinuxApplicationStreams(std::shared_ptr<pipewire::Session> pipeWire,
                                                 std::shared_ptr<pulse::Session> pulse)
    : pipeWire_(std::move(pipeWire)),
      pulse_(std::move(pulse)),
      pipeWireWatch_(std::make_unique<Watch<pipewire::Session>>(*this, *pipeWire_, pipeWireStreams_)),
      pulseWatch_(std::make_unique<Watch<pulse::Session>>(*this, *pulse_, pulseStreams_)) {}

LinuxApplicationStreams::~LinuxApplicationStreams() = default;

void LinuxApplicationStreams::onChange(Handler handler) {
    const std::scoped_lock lock(lock_);
    handler_ = std::move(handler);
    tell();
}

void LinuxApplicationStreams::leaveOut(LeftOut what) {
    {
        const auto lock = pulse_->lock();
        pulse_->leaveOut(what);
    }
    const auto lock = pipeWire_->lock();
    pipeWire_->leaveOut(std::move(what));
}

void LinuxApplicationStreams::update(Streams& ofServer, Streams now) {
    const std::scoped_lock lock(lock_);
    if (ofServer != now) {
        ofServer = std::move(now);
        tell();
    }
}

void LinuxApplicationStreams::tell() const {
    if (handler_) {
        Streams all = pipeWireStreams_;
        all.insert(all.end(), pulseStreams_.begin(), pulseStreams_.end());
        handler_(all);
    }
}

}  // namespace sordin
