// SPDX-License-Identifier: MIT
#include "platform/linux/pipewire/session.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <utility>

namespace sordin::pipewire {

namespace {

using namespace std::chrono_literals;

constexpr auto reconnectInterval = 500ms;
constexpr auto endDeadline = 100ms;
constexpr int listingRoundsNeeded = 4;  // one more than the steps: object names, object info, volumes

}  // namespace

Session::Session() {
    pw_init(nullptr, nullptr);
    loop_.reset(pw_thread_loop_new("sordin.pipewire", nullptr));
    if (!loop_) {
        throw std::runtime_error("Cannot create the PipeWire loop.");
    }
    auto* loop = pw_thread_loop_get_loop(loop_.get());
    const std::array<spa_dict_item, 3> items{{{PW_KEY_APP_NAME, "Sordin"},
                                              {PW_KEY_APP_ID, "org.sordin.Sordin"},
                                              {PW_KEY_MEDIA_CATEGORY, "Manager"}}};
    const spa_dict properties{0, items.size(), items.data()};
    // Null if only the PipeWire library is installed, as on a desktop with PulseAudio.
    context_.reset(pw_context_new(loop, pw_properties_new_dict(&properties), 0));
    refresh_ = std::make_unique<LoopEvent>(loop, [this] { onRefresh(); });
    refreshTimer_ = std::make_unique<LoopTimer>(loop, [this] {
        refreshAt_.reset();
        onRefresh();
    });
    connectTimer_ = std::make_unique<LoopTimer>(loop, [this] { connect(); });
    connectTimer_->runAfter(0ms);
    if (pw_thread_loop_start(loop_.get()) < 0) {
        throw std::runtime_error("Cannot start the PipeWire thread.");
    }
}

Session::~Session() {
    {
        const LoopLock lock(loop_.get());
        if (connection_) {
            connection_->prepareEnd();
        }
    }
    flush(endDeadline);
    {
        const LoopLock lock(loop_.get());
        disconnect();
    }
    pw_thread_loop_stop(loop_.get());
}

void Session::add(Observer& observer) {
    const LoopLock lock(loop_.get());
    observers_.push_back(&observer);
    refresh_->signal();
}

void Session::remove(Observer& observer) {
    const LoopLock lock(loop_.get());
    observers_.erase(std::remove(observers_.begin(), observers_.end(), &observer), observers_.end());
}

void Session::refreshAfter(std::chrono::milliseconds delay) {
    const auto when = std::chrono::steady_clock::now() + delay;
    if (!refreshAt_ || when < *refreshAt_) {
        refreshAt_ = when;
        refreshTimer_->runAfter(delay);
    }
}

bool Session::waitUntilListed(std::chrono::milliseconds deadline) {
    return waitFor(deadline, [this] { return listed_; });
}

bool Session::flush(std::chrono::milliseconds deadline) {
    std::uint64_t connection = 0;
    int sequence = 0;
    {
        const LoopLock lock(loop_.get());
        if (!connection_ || lost_) {
            return false;
        }
        connection = connections_;
        sequence = connection_->synchronise();
    }
    const auto lostMeanwhile = [this, connection] { return !connection_ || connections_ != connection; };
    return waitFor(deadline, [&] { return lostMeanwhile() || done_ >= sequence; }) && !lostMeanwhile();
}

std::optional<std::string> Session::portalApplication(std::int32_t processId) const {
    const LoopLock lock(loop_.get());
    if (connection_) {
        for (const auto& entry : connection_->graph().clients) {
            const Client& client = entry.second;
            if (client.processId == processId && !client.portalApplication.empty()) {
                return client.portalApplication;
            }
        }
    }
    return std::nullopt;
}

void Session::connect() {
    if (!context_) {
        return;
    }
    connection_ = Connection::open(context_.get(), {[this] { refresh_->signal(); }, [this] { onLost(); },
                                                    [this](int sequence) { onSynchronised(sequence); }});
    if (!connection_) {
        connectTimer_->runAfter(reconnectInterval);
        return;
    }
    ++connections_;
    done_ = 0;
    listingRounds_ = 0;
    listingSequence_ = connection_->synchronise();
    refresh_->signal();
}

void Session::disconnect() {
    if (connection_) {
        for (Observer* observer : observers_) {
            observer->disconnecting();
        }
        connection_.reset();
    }
    lost_ = false;
    listed_ = false;
    settledWhenListed_ = false;
    pw_thread_loop_signal(loop_.get(), false);  // wakes the waits whose reply can no longer arrive
}

void Session::onLost() {
    lost_ = true;  // disconnect() has to wait until this event of the connection returns
    refresh_->signal();
}

void Session::onSynchronised(int sequence) {
    done_ = sequence;
    if (!listed_ && sequence == listingSequence_) {
        if (++listingRounds_ < listingRoundsNeeded) {
            listingSequence_ = connection_->synchronise();
        } else {
            listed_ = true;
            settledWhenListed_ = !connection_->graph().defaultSink.empty();
            refresh_->signal();
        }
    }
    pw_thread_loop_signal(loop_.get(), false);
}

void Session::leaveOut(LeftOut what) {
    leftOut_ = std::move(what);
    refresh_->signal();
}

void Session::onRefresh() {
    if (lost_) {
        disconnect();
        connectTimer_->runAfter(reconnectInterval);
    }
    if (connection_) {
        connection_->leaveOut(leftOut_);
    }
    for (Observer* observer : observers_) {
        observer->graphChanged();
    }
}

template <class Condition>
bool Session::waitFor(std::chrono::milliseconds deadline, Condition condition) {
    const LoopLock lock(loop_.get());
    timespec end{};
    pw_thread_loop_get_time(loop_.get(), &end, std::chrono::nanoseconds(deadline).count());
    while (!condition()) {
        if (pw_thread_loop_timed_wait_full(loop_.get(), &end) < 0) {
            return condition();
        }
    }
    return true;
}

}  // namespace sordin::pipewire
