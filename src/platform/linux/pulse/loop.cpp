// SPDX-License-Identifier: MIT
#include "platform/linux/pulse/loop.h"

#include <cstdint>
#include <pulse/rtclock.h>
#include <stdexcept>
#include <sys/eventfd.h>
#include <sys/time.h>
#include <unistd.h>
#include <utility>

namespace sordin::pulse {

Loop::Loop() : loop_(pa_threaded_mainloop_new()) {
    if (!loop_) {
        throw std::runtime_error("Cannot create the PulseAudio loop.");
    }
    timers_.reset(pa_context_new(api(), "Sordin"));
    if (!timers_) {
        throw std::runtime_error("Cannot set up the PulseAudio client library.");
    }
    pa_threaded_mainloop_set_name(loop_.get(), "sordin.pulse");
}

Loop::~Loop() = default;

void Loop::start() {
    if (pa_threaded_mainloop_start(loop_.get()) < 0) {
        throw std::runtime_error("Cannot start the PulseAudio thread.");
    }
}

void Loop::stop() {
    pa_threaded_mainloop_stop(loop_.get());
}

bool Loop::waitFor(std::chrono::milliseconds deadline, const std::function<bool()>& condition) {
    const LoopLock held = lock();
    bool late = false;
    LoopTimer timer(*this, [this, &late] {
        late = true;
        signal();
    });
    timer.runAfter(deadline);
    while (!condition() && !late) {
        pa_threaded_mainloop_wait(loop_.get());
    }
    return condition();
}

LoopEvent::LoopEvent(const Loop& loop, std::function<void()> action)
    : loop_(loop), action_(std::move(action)), descriptor_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    const auto onSignal = [](pa_mainloop_api* /*api*/, pa_io_event* /*event*/, int descriptor,
                             pa_io_event_flags_t /*flags*/, void* data) {
        eventfd_t count = 0;
        static_cast<void>(eventfd_read(descriptor, &count));
        static_cast<LoopEvent*>(data)->action_();
    };
    if (descriptor_.get() >= 0) {
        source_ = loop_.api()->io_new(loop_.api(), descriptor_.get(), PA_IO_EVENT_INPUT, onSignal, this);
    }
    if (source_ == nullptr) {
        throw std::runtime_error("Cannot add a source to the PulseAudio loop.");
    }
}

LoopEvent::~LoopEvent() {
    loop_.api()->io_free(source_);
}

void LoopEvent::signal() {
    static_cast<void>(eventfd_write(descriptor_.get(), 1));
}

LoopTimer::LoopTimer(const Loop& loop, std::function<void()> action)
    : loop_(loop), action_(std::move(action)) {}

LoopTimer::~LoopTimer() {
    cancel();
}

void LoopTimer::runAfter(std::chrono::microseconds delay) {
    cancel();
    const auto onTime = [](pa_mainloop_api* /*api*/, pa_time_event* /*event*/, const timeval* /*when*/,
                           void* data) {
        auto& self = *static_cast<LoopTimer*>(data);
        self.cancel();
        self.action_();
    };
    const pa_usec_t when = pa_rtclock_now() + static_cast<pa_usec_t>(delay.count());
    source_ = pa_context_rttime_new(loop_.timers(), when, onTime, this);
}

void LoopTimer::cancel() {
    if (auto* source = std::exchange(source_, nullptr)) {
        loop_.api()->time_free(source);
    }
}

}  // namespace sordin::pulse
