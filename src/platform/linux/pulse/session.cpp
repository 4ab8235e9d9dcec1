// SPDX-License-Identifier: MIT
#include "platform/linux/pulse/session.h"

#include <algorithm>
#include <utility>

namespace sordin::pulse {

namespace {

using namespace std::chrono_literals;

constexpr auto reconnectInterval = 500ms;
constexpr auto lookInterval = 3s;
constexpr auto patienceForIdentity = 1500ms;

}  // namespace

Session::Session()
    : refresh_(loop_, [this] { onRefresh(); }),
      look_(loop_, [this] { onLook(); }),
      refreshTimer_(loop_,
                    [this] {
                        refreshAt_.reset();
                        onRefresh();
                    }),
      connectTimer_(loop_, [this] { onLook(); }),
      decideTimer_(loop_, [this] { onRefresh(); }) {
    connect();
    loop_.start();
}

Session::~Session() {
    {
        const LoopLock held = lock();
        disconnect();
    }
    loop_.stop();
}

void Session::add(Observer& observer) {
    const LoopLock held = lock();
    observers_.push_back(&observer);
    refresh_.signal();
}

void Session::remove(Observer& observer) {
    const LoopLock held = lock();
    observers_.erase(std::remove(observers_.begin(), observers_.end(), &observer), observers_.end());
}

void Session::refreshAfter(std::chrono::milliseconds delay) {
    const auto when = Clock::now() + delay;
    if (!refreshAt_ || when < *refreshAt_) {
        refreshAt_ = when;
        refreshTimer_.runAfter(delay);
    }
}

void Session::keepLooking(bool looking) {
    if (looking_.exchange(looking) != looking && looking) {
        look_.signal();
    }
}

void Session::look() {
    const LoopLock held = lock();
    asked_ = true;
    onLook();
}

bool Session::undecided() const {
    return connection_ && !over_ && !connection_->isPulseAudio() &&
           Clock::now() < attempted_ + patienceForIdentity;
}

bool Session::waitUntilKnown(std::chrono::milliseconds deadline) {
    bool there = false;
    static_cast<void>(loop_.waitFor(deadline, [this, &there] {
        there = ready();
        return there || !connection_ || over_ || connection_->isPulseAudio() == false;
    }));
    return there;
}

bool Session::flush(std::chrono::milliseconds deadline) {
    std::uint64_t connection = 0;
    std::uint64_t question = 0;
    {
        const LoopLock held = lock();
        if (!connected() || over_ || !connection_->synchronise()) {
            return false;
        }
        connection = connections_;
        question = ++questions_;
    }
    bool lost = false;
    return loop_.waitFor(deadline, [&] {
        lost = connections_ != connection || !connection_;
        return lost || answers_ >= question;
    }) && !lost;
}

void Session::connect() {
    connection_ = Connection::open(loop_, {[this] {
                                               if (connected()) {
                                                   connection_->list();
                                               }
                                           },
                                           [this] { refresh_.signal(); },
                                           [this] {
                                               over_ = true;
                                               refresh_.signal();
                                           },
                                           [this] {
                                               ++answers_;
                                               loop_.signal();
                                           }});
    asked_ = false;
    attempted_ = Clock::now();
    decideTimer_.runAfter(patienceForIdentity);
    ++connections_;
    questions_ = 0;
    answers_ = 0;
    if (!connection_) {
        over_ = true;  // onRefresh() tries again
    }
    refresh_.signal();
}

void Session::disconnect() {
    if (connection_) {
        for (Observer* observer : observers_) {
            observer->disconnecting();
        }
        asked_ = asked_ || connection_->isPulseAudio().has_value();
        connection_.reset();
        decideTimer_.cancel();
    }
    over_ = false;
}

void Session::onLook() {
    if (connection_ || over_ || !(looking_ || asked_)) {
        return;
    }
    const Clock::duration pause = looking_ ? Clock::duration(reconnectInterval) : lookInterval;
    const auto left = attempted_ + pause - Clock::now();
    if (left <= Clock::duration::zero()) {
        connect();
    } else {
        connectTimer_.runAfter(std::chrono::ceil<std::chrono::microseconds>(left));
    }
}

void Session::leaveOut(LeftOut what) {
    leftOut_ = std::move(what);
    refresh_.signal();
}

void Session::onRefresh() {
    if (over_) {
        disconnect();
        attempted_ = Clock::now();
        onLook();
    }
    if (connected()) {
        connection_->leaveOut(leftOut_);
    }
    for (Observer* observer : observers_) {
        observer->graphChanged();
    }
    loop_.signal();  // waitFor() conditions may hold now
}

}  // namespace sordin::pulse
