// SPDX-License-Identifier: MIT
#include "platform/loopback_capture.h"

#include <mutex>
#include <utility>

namespace sordin {

namespace {

constexpr auto silenceInterval = std::chrono::milliseconds(500);

CapturedAudio halfSecondOfSilence() {
    constexpr int frames = SystemAudioCapture::sampleRate / 2;
    return {StreamDescription{SystemAudioCapture::sampleRate, 1, SampleType::float32, true}, frames,
            std::vector<std::byte>(frames * sizeof(float))};
}

}  // namespace

/// Passes the samples to the handler, and zeros while there are none. end() may be called on any thread.
class LoopbackCapture::Delivery : public std::enable_shared_from_this<Delivery> {
public:
    Delivery(std::shared_ptr<SerialQueue> queue, SampleHandler handler)
        : queue_(std::move(queue)), handler_(std::move(handler)) {}

    /// Any thread.
    void heard(CapturedAudio audio) {
        anythingHeard_ = true;
        queue_->post([self = shared_from_this(), audio = std::move(audio)] { self->deliver(audio); });
    }

    void begin() {
        silence_ = queue_->every(silenceInterval, [weak = weak_from_this()] {
            const auto self = weak.lock();
            if (self && !self->anythingHeard_.exchange(false)) {
                self->deliver(self->zeros_);
            }
        });
    }

    void end() {
        live_ = false;
        silence_.cancel();
    }

private:
    void deliver(const CapturedAudio& audio) const {
        if (live_) {
            handler_(audio);
        }
    }

    const std::shared_ptr<SerialQueue> queue_;
    const SampleHandler handler_;
    const CapturedAudio zeros_ = halfSecondOfSilence();
    std::atomic<bool> live_ = true;
    std::atomic<bool> anythingHeard_ = false;  // since the last tick of silence_
    Timer silence_;
};

/// Connects an open source to the delivery of the current start. Any thread.
class LoopbackCapture::Outlet {
public:
    void lead(std::shared_ptr<Delivery> delivery) {
        const std::scoped_lock lock(lock_);
        delivery_.swap(delivery);
    }
    void heard(CapturedAudio audio) {
        std::shared_ptr<Delivery> delivery;
        {
            const std::scoped_lock lock(lock_);
            delivery = delivery_;
        }
        if (delivery) {
            delivery->heard(std::move(audio));
        }
    }

private:
    std::mutex lock_;
    std::shared_ptr<Delivery> delivery_;  // none while idle
};

/// All the state of a capture. Use it on the control queue only, except where noted.
class LoopbackCapture::Machine : public std::enable_shared_from_this<Machine> {
    template <class Action>
    std::function<void()> whileAlive(Action action) {
        return [weak = weak_from_this(), action = std::move(action)] {
            if (const auto self = weak.lock()) {
                action(*self);
            }
        };
    }

    /// Makes a callback for the source, which calls it on its own threads with its locks held. The callback
    /// posts `action(*this, arguments...)`. It holds the machine weakly, so it never destroys the machine on
    /// the source's thread.
    template <class Action>
    auto posting(Action action) {
        return [control = control_, weak = weak_from_this(), action](const auto&... arguments) {
            control->post([weak, action, arguments...] {
                if (const auto self = weak.lock()) {
                    action(*self, arguments...);
                }
            });
        };
    }

public:
    Machine(std::shared_ptr<SerialQueue> control, std::unique_ptr<LoopbackSource> source)
        : control_(std::move(control)), source_(std::move(source)) {}

    /// Posts `action(*this)`, which is dropped if the machine is destroyed first. Any thread.
    template <class Action>
    void post(Action action) {
        control_->post(whileAlive(std::move(action)));
    }

    void watchSource() {
        source_->onChange(posting([](Machine& machine) { machine.sourceChanged(); }));
    }

    void onStop(std::function<void(std::optional<Failure>)> handler) { onStop_ = std::move(handler); }

    void onReady(std::function<void()> handler) { onReady_ = std::move(handler); }

    /// Cancels all starts up to this number that have not begun yet. Any thread.
    void overtake(std::uint64_t start) { overtaken_ = start; }

    void start(std::uint64_t number, const std::shared_ptr<SerialQueue>& queue, SampleHandler handler,
               StartCompletion completion) {
        if (number <= overtaken_) {
            completion(source_->failure(Error::cancelled));
            return;
        }
        if (state_ != State::idle) {
            completion(source_->failure(Error::alreadyRunning));
            return;
        }
        queue_ = queue;
        delivery_ = std::make_shared<Delivery>(queue, std::move(handler));
        outlet_->lead(delivery_);
        completion_ = std::move(completion);
        keepTimer_.cancel();
        if (source_->outdated()) {
            closeSource();
        }
        if (sourceState_ == SourceState::closed) {
            beginToOpen();
            return;
        }
        source_->setWanted(true);
        state_ = State::opening;
        lastFailure_ = source_->failure(Error::refused);
        bePatient();
        if (sourceState_ == SourceState::open) {
            opened();
        }
    }

    void stop(std::function<void()> completion) {
        becomeIdle(true);
        if (const auto cancelled = std::exchange(completion_, nullptr)) {
            cancelled(source_->failure(Error::cancelled));
        }
        if (!queue_) {
            completion();
            return;
        }
        // The completion has to follow the samples that are already posted to the handler's queue.
        queue_->post([control = control_, completion = std::move(completion)] { control->post(completion); });
    }

    void end() {
        onStop_ = nullptr;
        onReady_ = nullptr;
        stop([] {});
        closeSource();
    }

private:
    enum class State {
        idle,
        waiting,  // for obstacles to opening to go away
        opening,
        running,
    };
    enum class SourceState { closed, opening, open };

    void sourceChanged() {
        if (source_->outdated()) {
            closeSource();
            if (state_ == State::opening || state_ == State::running) {
                beginToOpen();
                return;
            }
        }
        if (state_ == State::waiting) {
            tryToOpen();
        } else if (state_ == State::idle) {
            const bool obstructed = source_->obstacle().has_value();
            if (std::exchange(obstructed_, obstructed) && !obstructed && onReady_) {
                onReady_();
            }
        }
    }

    void bePatient() {
        patienceTimer_ = control_->after(
            patience, whileAlive([](Machine& machine) { machine.fail(machine.lastFailure_); }));
    }

    void beginToOpen() {
        state_ = State::waiting;
        lastFailure_ = source_->failure(Error::unreachable);
        bePatient();
        tryToOpen();
    }

    void tryToOpen() {
        if (const auto obstacle = source_->obstacle()) {
            obstructed_ = true;
            lastFailure_ = obstacle->failure;
            if (!obstacle->passing) {
                fail(lastFailure_);
            }
            return;
        }
        obstructed_ = false;
        state_ = State::opening;
        sourceState_ = SourceState::opening;
        lastFailure_ = source_->failure(Error::refused);
        // Reports about an earlier opening are obsolete.
        const auto now = ++opening_;
        source_->open({posting([now](Machine& machine) {
                           if (machine.opening_ == now) {
                               machine.opened();
                           }
                       }),
                       posting([now](Machine& machine, const Failure& failure) {
                           if (machine.opening_ == now) {
                               machine.ended(failure);
                           }
                       }),
                       [outlet = outlet_](CapturedAudio audio) { outlet->heard(std::move(audio)); }});
    }

    void opened() {
        sourceState_ = SourceState::open;
        if (state_ == State::opening) {
            state_ = State::running;
            patienceTimer_.cancel();
            if (completion_) {
                delivery_->begin();
                std::exchange(completion_, nullptr)(std::nullopt);
            }
        } else {
            source_->setWanted(false);  // stopped in the meantime
        }
    }

    void ended(const Failure& failure) {
        if (state_ == State::opening && failure.error == Error::connectionLost) {
            closeSource();
            state_ = State::waiting;  // a server that returns in time is used
            lastFailure_ = failure;
            tryToOpen();
        } else if (state_ == State::idle) {
            closeSource();
        } else {
            fail(failure);
        }
    }

    /// Fails the start in flight, or ends the running capture.
    void fail(const Failure& failure) {
        becomeIdle(false);
        if (completion_) {
            std::exchange(completion_, nullptr)(failure);
            return;
        }
        obstructed_ = source_->obstacle().has_value();
        if (onStop_) {
            onStop_(failure);
        }
    }

    void becomeIdle(bool keepSource) {
        patienceTimer_.cancel();
        outlet_->lead(nullptr);
        if (const auto delivery = std::exchange(delivery_, nullptr)) {
            delivery->end();
        }
        state_ = State::idle;
        if (!keepSource) {
            closeSource();
        } else if (sourceState_ != SourceState::closed) {
            source_->setWanted(false);
            keepTimer_ =
                control_->after(keepTime, whileAlive([](Machine& machine) { machine.closeSource(); }));
        }
    }

    void closeSource() {
        ++opening_;
        keepTimer_.cancel();
        source_->close();
        sourceState_ = SourceState::closed;
    }

    const std::shared_ptr<SerialQueue> control_;
    const std::unique_ptr<LoopbackSource> source_;
    std::function<void(std::optional<Failure>)> onStop_;
    std::function<void()> onReady_;

    std::atomic<std::uint64_t> overtaken_ = 0;
    const std::shared_ptr<Outlet> outlet_ = std::make_shared<Outlet>();

    State state_ = State::idle;
    SourceState sourceState_ = SourceState::closed;
    bool obstructed_ = false;             // whether there was an obstacle at the last check
    std::uint64_t opening_ = 0;           // number of the current opening; late reports have another
    std::shared_ptr<SerialQueue> queue_;  // of the last start
    std::shared_ptr<Delivery> delivery_;
    StartCompletion completion_;               // of the start in flight; empty once the capture runs
    Failure lastFailure_{Error::unreachable};  // reported when patienceTimer_ fires
    Timer patienceTimer_;
    Timer keepTimer_;
};

LoopbackCapture::LoopbackCapture(std::shared_ptr<SerialQueue> control, std::unique_ptr<LoopbackSource> source)
    : control_(std::move(control)), machine_(std::make_shared<Machine>(control_, std::move(source))) {
    machine_->watchSource();
}

LoopbackCapture::~LoopbackCapture() {
    machine_->overtake(asked_);
    control_->sync([this] { machine_->end(); });
}

void LoopbackCapture::start(std::shared_ptr<SerialQueue> queue, SampleHandler handler,
                            StartCompletion completion) {
    machine_->post([number = ++asked_, queue = std::move(queue), handler = std::move(handler),
                    completion = std::move(completion)](Machine& machine) {
        machine.start(number, queue, handler, completion);
    });
}

void LoopbackCapture::stop(std::function<void()> completion) {
    machine_->overtake(asked_);
    machine_->post([completion = std::move(completion)](Machine& machine) { machine.stop(completion); });
}

void LoopbackCapture::onStop(std::function<void(std::optional<Failure>)> handler) {
    machine_->post([handler = std::move(handler)](Machine& machine) { machine.onStop(handler); });
}

void LoopbackCapture::onReady(std::function<void()> handler) {
    machine_->post([handler = std::move(handler)](Machine& machine) { machine.onReady(handler); });
}

}  // namespace sordin
