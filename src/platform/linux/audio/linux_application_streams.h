// SPDX-License-Identifier: MIT
#pragma once

#include "platform/application_streams.h"
#include "platform/linux/pipewire/session.h"
#include "platform/linux/pulse/session.h"

#include <memory>
#include <mutex>
#include <vector>

namespace sordin {

/// Lists the applications' streams of both servers, because a call may use a server that plays nothing else.
class LinuxApplicationStreams final : public ApplicationStreams {
public:
    /// Neither argument may be null.
    LinuxApplicationStreams(std::shared_ptr<pipewire::Session> pipeWire,
                            std::shared_ptr<pulse::Session> pulse);
    ~LinuxApplicationStreams() override;
    LinuxApplicationStreams(const LinuxApplicationStreams&) = delete;
    LinuxApplicationStreams& operator=(const LinuxApplicationStreams&) = delete;

    void onChange(Handler handler) override;
    void leaveOut(LeftOut what) override;

private:
    template <class Session>
    class Watch;
    using Streams = std::vector<ApplicationStream>;

    void update(Streams& ofServer, Streams now);
    void tell() const;

    const std::shared_ptr<pipewire::Session> pipeWire_;
    const std::shared_ptr<pulse::Session> pulse_;
    std::mutex lock_;
    Handler handler_;  // guarded by lock_, like both lists below
    Streams pipeWireStreams_;
    Streams pulseStreams_;
    std::unique_ptr<Watch<pipewire::Session>> pipeWireWatch_;
    std::unique_ptr<Watch<pulse::Session>> pulseWatch_;
};

}  // namespace sordin
